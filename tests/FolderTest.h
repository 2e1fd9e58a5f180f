#pragma once

#include "Files.h"
#include "Log/LoggedLines.h"

#include <QTemporaryDir>

/// A test with a temporary directory and a collector of log messages.
class FolderTest : public testing::Test {
protected:
    QString pathOf(const QString& name) const { return m_folder.filePath(name); }

    const QTemporaryDir m_folder;
    LoggedLines logged;
};

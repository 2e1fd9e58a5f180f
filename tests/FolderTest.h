#pragma once

#include "Files.h"
#include "Log/LoggedLines.h"

#include <QTemporaryDir>

/// A test with a folder of its own, which sees what is logged.
class FolderTest : public testing::Test {
protected:
    QString placeOf(const QString& name) const { return m_folder.filePath(name); }

    const QTemporaryDir m_folder;
    LoggedLines logged;
};

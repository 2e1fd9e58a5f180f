#pragma once

#include "Files.h"
#include "Log/LoggedLines.h"

#include <QTemporaryDir>

/// A test with a temporary directory and a collector of log messages.
class DirectoryTest : public testing::Test {
protected:
    QString pathOf(const QString& name) const { return m_directory.filePath(name); }

    const QTemporaryDir m_directory;
    LoggedLines logged;
};

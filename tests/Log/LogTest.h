#pragma once

#include "Log/ChildProcess.h"

#include <Orv/Log/LogManager.h>
#include <Orv/Log/OrvDebug.h>

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

using Orv::LogManager;
using Orv::OrvDebug;
using testing::ElementsAre;

using Lines = std::vector<std::string>;

/// A directory for logs, and what they hold. The log is configured in child processes: that works once a process.
class LogTest : public testing::Test {
protected:
    QString path(const QString& name) const { return QDir(m_folder.path()).filePath(name); }
    QString log(const QString& folder = QString()) const
    {
        return QDir(path(folder)).filePath(QStringLiteral("log_DOV_LOG.log"));
    }
    QString shadow() const { return path(QStringLiteral("shadow.log")); }
    QString output() const { return path(QStringLiteral("output")); }

    /// The paths of the rotated logs, the oldest first.
    QStringList rotated(const QString& folder = QString()) const
    {
        QStringList paths;
        for (const QString& name : QDir(path(folder)).entryList({QStringLiteral("log_DOV_LOG_*.log")}))
            paths += QDir(path(folder)).filePath(name);
        return paths;
    }

    /// Configures the log in the test's directory or one below it, with the file on.
    LogManager& manager(const QString& folder = QString()) const
    {
        LogManager& manager = LogManager::instance();
        manager.setLogPath(path(folder));
        manager.setOutToFile(true);
        return manager;
    }

    LogManager& managerWithShadow(const QString& folder = QString()) const
    {
        manager(folder).setEnableShadow(true);
        manager(folder).setShadowFilePath(shadow());
        return manager(folder);
    }

    /// The lines of a log without the date and time, which are checked here, and with N for the number of the thread,
    /// which depends on what the process did before.
    static Lines entries(const QString& path)
    {
        static const QRegularExpression time(QStringLiteral("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d,\\d{6} "));
        static const QRegularExpression thread(QStringLiteral("\\] \\[ \\d+ \\] "));
        Lines result;
        for (const QString& line : linesOf(path)) {
            const auto match = time.match(line);
            QString entry = match.hasMatch() ? line.mid(match.capturedLength()) : line;
            result.push_back(entry.replace(thread, QStringLiteral("] [ N ] ")).toStdString());
        }
        return result;
    }

    /// What `work` in a child process leaves in a new log.
    Lines logged(const std::function<void()>& work) const
    {
        for (const QString& file : rotated() + QStringList{log(), output()})
            QFile::remove(file);
        expectInChild(work, output());
        Lines lines;
        for (const QString& file : rotated() + QStringList(log())) {
            const Lines more = entries(file);
            lines.insert(lines.end(), more.begin(), more.end());
        }
        return lines;
    }

    QTemporaryDir m_folder;
};

inline void inThreads(int count, const std::function<void(int)>& work)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i)
        threads.emplace_back(work, i);
    for (std::thread& thread : threads)
        thread.join();
}

#pragma once

#include "Log/ChildProcess.h"

#include <Orv/Log/LogManager.h>
#include <Orv/Log/MessageHandlers.h>
#include <Orv/Log/OrvDebug.h>

#include <QDir>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <sys/stat.h>

using Orv::LogManager;
using Orv::OrvDebug;
using testing::ElementsAre;

using Lines = std::vector<std::string>;

/// A temporary directory for logs, and their content. Logging is configured in child processes, once per process.
class LogTest : public testing::Test {
protected:
    QString path(const char* name) const { return m_directory.filePath(QLatin1String(name)); }
    QString log() const { return path("log_DOV_LOG.log"); }
    QString shadow() const { return path("shadow.log"); }
    QString output() const { return path("output"); }

    /// The paths of the ordinary log's files, the oldest first.
    QStringList logs() const
    {
        QStringList paths;
        for (const QString& name : QDir(m_directory.path()).entryList({QStringLiteral("log_DOV_LOG_*.log")}))
            paths += m_directory.filePath(name);
        return paths + QStringList(log());
    }

    /// Configures the log in the test's directory, with log file and crash handler.
    LogManager& manager(bool hasShadow = false) const
    {
        LogManager& manager = LogManager::instance();
        manager.setLogPath(m_directory.path());
        manager.setOutToFile(true);
        manager.setCrashHandler(true);
        manager.setEnableShadow(hasShadow);
        manager.setShadowFilePath(shadow());
        return manager;
    }

    /// The lines of files, without date and time, and with N for the thread number, which depends on earlier messages
    /// of the process.
    static Lines entries(const QStringList& paths)
    {
        Lines result;
        for (const QString& path : paths) {
            std::ifstream file(path.toStdString());
            for (std::string line; std::getline(file, line); result.push_back(line)) {
                int end = 0; // of "2024-01-31 23:59:59,123456"
                std::sscanf(line.c_str(), "%*4d-%*2d-%*2d %*2d:%*2d:%*2d,%*6d%n", &end);
                line.erase(0, end == 26 ? 27 : 0);
                const std::size_t thread = line.find("] [ ");
                if (thread != std::string::npos)
                    line.replace(thread, line.find(" ]", thread + 3) - thread, "] [ N");
            }
        }
        return result;
    }

    /// Runs `work` in a child process with new logs. Returns their entries.
    Lines logged(const std::function<void()>& work) const
    {
        for (const QString& file : logs() + QStringList{shadow(), output()})
            QFile::remove(file);
        expectInChild(work, output());
        return entries(logs());
    }

    QTemporaryDir m_directory;
};

inline void inThreads(int count, const std::function<void(int)>& work)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i)
        threads.emplace_back(work, i);
    for (std::thread& thread : threads)
        thread.join();
}

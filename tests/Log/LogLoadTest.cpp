#include <Orv/Log/LogManager.h>

#include "Log/ChildProcess.h"

#include <QDir>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int Threads = 16;
constexpr int LinesEach = ORV_LOAD_LINES / Threads;

using Lines = std::vector<std::string>;

/// The lines of a log without date and time.
Lines linesIn(const QString& path)
{
    constexpr std::size_t TimeSize = sizeof("2024-01-31 23:59:59,123456 ") - 1;
    Lines lines;
    std::ifstream file(path.toStdString());
    for (std::string line; std::getline(file, line);)
        lines.push_back(line.substr(std::min(TimeSize, line.size())));
    return lines;
}

void expectOrderWithinEachThread(const Lines& lines)
{
    std::vector<int> next(Threads, 0);
    for (const std::string& line : lines) {
        int thread = -1;
        int number = -1;
        char end = 0;
        ASSERT_EQ(std::sscanf(line.c_str(), "[INFO]: %d %d en%c", &thread, &number, &end), 3) << line;
        ASSERT_TRUE(thread >= 0 && thread < Threads && end == 'd') << line;
        ASSERT_EQ(number, next[size_t(thread)]++) << line;
    }
    EXPECT_THAT(next, testing::Each(LinesEach));
}

} // namespace

TEST(LogLoad, ManyThreadsAndRollOvers)
{
    const QTemporaryDir folder;
    const QString shadow = folder.filePath(QStringLiteral("shadow"));
    expectInChild([&] {
        Orv::LogManager& manager = Orv::LogManager::instance();
        manager.setLogPath(folder.path());
        manager.setAppPrefix(QStringLiteral("load"));
        manager.setOutToFile(true);
        manager.setEnableShadow(true);
        manager.setShadowFilePath(shadow);
        manager.init();
        std::vector<std::thread> threads;
        for (int thread = 0; thread < Threads; ++thread) {
            threads.emplace_back([thread] {
                for (int number = 0; number < LinesEach; ++number)
                    qInfo("%d %d end", thread, number);
            });
        }
        for (std::thread& thread : threads)
            thread.join();
    });

    const Lines all = linesIn(shadow);
    ASSERT_EQ(all.size(), std::size_t(Threads) * LinesEach) << "the shadow log has every line once";
    expectOrderWithinEachThread(all);

    // Both logs have the lines in one order. So each file of the ordinary log is a piece of the shadow log, and what is
    // missing in between are whole files: those that were full within the same second as the one before.
    const QStringList files =
        QDir(folder.path()).entryList({QStringLiteral("log_load_*.log")}, QDir::Files, QDir::Name) +
        QStringList(QStringLiteral("log_load.log"));
    EXPECT_GE(files.size(), 2) << "there were roll-overs";
    auto from = all.begin();
    for (const QString& name : files) {
        const Lines piece = linesIn(folder.filePath(name));
        const auto found = piece.empty() ? from : std::find(from, all.end(), piece.front());
        ASSERT_LE(piece.size(), std::size_t(all.end() - found)) << name.toStdString();
        EXPECT_TRUE(std::equal(piece.begin(), piece.end(), found)) << name.toStdString();
        from = found + std::ptrdiff_t(piece.size());
    }
    EXPECT_TRUE(from == all.end() || linesIn(folder.filePath(files.last())).empty()) << "the last lines are kept";
}

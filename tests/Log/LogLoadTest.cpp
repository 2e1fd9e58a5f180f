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

Lines linesIn(const QString& path)
{
    Lines lines;
    std::ifstream file(path.toStdString());
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

/// Without date and time, which each log takes for itself.
std::string textOf(const std::string& line)
{
    constexpr std::size_t TimeSize = sizeof("2024-01-31 23:59:59,123456 ") - 1;
    return line.substr(std::min(TimeSize, line.size()));
}

bool haveSameText(const std::string& left, const std::string& right)
{
    return textOf(left) == textOf(right);
}

/// When a line was written, in the form that the names of logs have which were moved aside.
std::string secondOf(const std::string& line)
{
    std::string second = line.substr(0, sizeof("2024-01-31 23:59:59") - 1);
    second.erase(std::remove_if(second.begin(), second.end(), [](char c) { return c < '0' || c > '9'; }), second.end());
    return second;
}

void expectOrderWithinEachThread(const Lines& lines)
{
    std::vector<int> next(Threads, 0);
    for (const std::string& whole : lines) {
        const std::string line = textOf(whole);
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
    // missing in between are whole files: those that were full within the same second as one that was moved aside.
    const QString current = QStringLiteral("log_load.log");
    const QStringList moved =
        QDir(folder.path()).entryList({QStringLiteral("log_load_*.log")}, QDir::Files, QDir::Name);
    EXPECT_GE(moved.size(), 1) << "there were roll-overs";
    auto from = all.begin();
    for (const QString& name : moved + QStringList(current)) {
        const Lines piece = linesIn(folder.filePath(name));
        const auto found = piece.empty() ? all.end() : std::find_if(from, all.end(), [&piece](const std::string& line) {
            return haveSameText(line, piece.front());
        });
        ASSERT_LE(piece.size(), std::size_t(all.end() - found)) << name.toStdString();
        EXPECT_TRUE(std::equal(piece.begin(), piece.end(), found, haveSameText)) << name.toStdString();
        if (found - from >= 2) {
            EXPECT_TRUE(std::any_of(moved.begin(), moved.end(),
                [&](const QString& other) {
                    const std::string second = other.mid(int(sizeof("log_load_")) - 1, 14).toStdString();
                    return secondOf(*(found - 2)) <= second && second <= secondOf(*(found - 1));
                }))
                << "lost without need: what came before " << name.toStdString();
        }
        from = found + std::ptrdiff_t(piece.size());
    }
    EXPECT_TRUE(from == all.end()) << "the last lines are kept";
}

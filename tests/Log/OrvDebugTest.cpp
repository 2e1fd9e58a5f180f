#include <Orv/Log/OrvDebug.h>

#include "Log/ChildProcess.h"
#include "Log/LoggedLines.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <mutex>
#include <set>
#include <thread>

using Orv::OrvDebug;
using Orv::OrvFullDebug;

TEST(OrvDebug, SeveritiesAndCategories)
{
    const std::tuple<QDebug (OrvDebug::*)() const, const char*, const char*> rows[] = {
        {&OrvDebug::debug, "debug", "d.orv.log"}, {&OrvDebug::debugOnly, "debug", "d.orv.log"},
        {&OrvDebug::info, "info", "0.orv.log"}, {&OrvDebug::infoH, "info", "1.orv.log"},
        {&OrvDebug::warning, "warning", "default"}, {&OrvDebug::critical, "error", "default"},
        {&OrvDebug::error, "error", "default"}};
    LoggedLines lines;
    const OrvDebug log("Engine");
    for (const auto& [open, type, category] : rows) {
        (log.*open)() << QStringLiteral("a \"text\"") << 7;
        EXPECT_EQ(
            lines.take(), QStringList(QStringLiteral("%1: [ Engine ] [ %2 ] a \"text\" 7").arg(type).arg(threadId())));
        EXPECT_EQ(lines.lastOrigin(), QStringLiteral("%1::0").arg(category));
    }
    EXPECT_EQ(log.debugOnly().verbosity(), 0);
    EXPECT_EQ(log.debug().verbosity(), QDebug::DefaultVerbosity);
}

TEST(OrvDebug, ThreadNumbersFollowFirstUse)
{
    const quint64 ofParent = threadId();
    expectInChild([ofParent] {
        QLoggingCategory::setFilterRules(QStringLiteral("d.orv.log.debug=false"));
        const quint64 own = threadId();
        EXPECT_GT(own, ofParent) << "a forked process has a thread of its own";
        std::thread([] { OrvDebug("a").debug() << "off"; }).join(); // numbers its thread all the same
        std::vector<std::thread> threads;
        std::set<quint64> numbers;
        std::mutex mutex;
        for (int i = 0; i < 8; ++i) {
            threads.emplace_back([&] {
                const quint64 number = threadId();
                const std::lock_guard<std::mutex> lock(mutex);
                numbers.insert(number);
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(numbers.size(), 8u);
        EXPECT_EQ(*numbers.begin(), own + 2);
        EXPECT_EQ(*numbers.rbegin(), own + 9) << "no gaps";
        EXPECT_EQ(threadId(), own);
    });
}

TEST(OrvDebug, OutputGoesPastTheLog)
{
    const QTemporaryDir folder;
    const QString output = folder.filePath(QStringLiteral("output"));
    expectInChild(
        [] {
            LoggedLines lines;
            const OrvFullDebug timing("a", QStringLiteral("nothing of this")); // is silent
            OrvDebug::output() << "plain";
            OrvDebug::output() << " text" << 7;
            EXPECT_EQ(lines.take(), QStringList());
        },
        output);
    EXPECT_EQ(contentOf(output), "plain text7");
}

#include <Orv/Log/OrvDebug.h>

#include "Log/ChildProcess.h"

#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <thread>

using Orv::OrvDebug;
using Orv::OrvFullDebug;

namespace {

struct Message {
    QtMsgType type;
    std::string category;
    bool hasOrigin;
    std::string text;
};

std::vector<Message> messages;

/// Collects the messages of Qt while it lives, with the categories as they are by default.
struct Collector {
    Collector()
    {
        messages.clear();
        QLoggingCategory::setFilterRules(QString());
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext& context, const QString& text) {
            messages.push_back(
                {type, context.category, context.file || context.function || context.line, text.toStdString()});
        });
    }
    ~Collector() { qInstallMessageHandler(nullptr); }
};

} // namespace

TEST(OrvDebug, SeveritiesAndCategories)
{
    struct Row {
        QDebug (OrvDebug::*open)() const;
        QtMsgType type;
        const char* category;
    };
    const Row rows[] = {
        {&OrvDebug::debug, QtDebugMsg, "d.orv.log"},
        {&OrvDebug::debugOnly, QtDebugMsg, "d.orv.log"},
        {&OrvDebug::info, QtInfoMsg, "0.orv.log"},
        {&OrvDebug::infoH, QtInfoMsg, "1.orv.log"},
        {&OrvDebug::warning, QtWarningMsg, "default"},
        {&OrvDebug::critical, QtCriticalMsg, "default"},
        {&OrvDebug::error, QtCriticalMsg, "default"},
    };
    const Collector collector;
    const OrvDebug log("Engine");
    for (const Row& row : rows) {
        messages.clear();
        (log.*row.open)() << QStringLiteral("a \"text\"") << 7;
        ASSERT_EQ(messages.size(), 1u) << row.category;
        EXPECT_EQ(messages[0].type, row.type) << row.category;
        EXPECT_EQ(messages[0].category, row.category);
        EXPECT_FALSE(messages[0].hasOrigin);
        EXPECT_EQ(messages[0].text, "[ Engine ] [ " + std::to_string(threadId()) + " ] a \"text\" 7");
    }
    EXPECT_EQ(log.debugOnly().verbosity(), 0);
    EXPECT_EQ(log.debug().verbosity(), QDebug::DefaultVerbosity);
}

TEST(OrvDebug, CategoriesAreSwitchedApart)
{
    const Collector collector;
    QLoggingCategory::setFilterRules(QStringLiteral("d.orv.log.debug=false\n1.orv.log.info=false"));
    const OrvDebug log("a");
    log.debug() << "off";
    log.debugOnly() << "off";
    log.infoH() << "off";
    log.info() << "on";
    log.warning() << "on";
    EXPECT_EQ(messages.size(), 2u);
}

TEST(OrvDebug, ThreadNumbersFollowFirstUse)
{
    const quint64 own = threadId();
    EXPECT_EQ(threadId(), own);
    QLoggingCategory::setFilterRules(QStringLiteral("d.orv.log.debug=false"));
    std::vector<std::thread> threads;
    std::vector<quint64> numbers(8);
    for (quint64& number : numbers) {
        threads.emplace_back([&number, own] {
            // A stream that is off numbers its thread too: the next thread to ask gets the number after it.
            OrvDebug("a").debug() << "off";
            number = threadId();
            EXPECT_NE(number, own);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    const std::set<quint64> different(numbers.begin(), numbers.end());
    EXPECT_EQ(different.size(), numbers.size());
    EXPECT_EQ(*different.rbegin() - *different.begin(), numbers.size() - 1) << "no gaps";
    EXPECT_EQ(threadId(), own);
}

TEST(OrvDebug, StreamsThatAreOffNumberTheirThread)
{
    const Ending ending = runInChild([] {
        QLoggingCategory::setFilterRules(QStringLiteral("d.orv.log.debug=false"));
        const quint64 own = threadId();
        std::thread([] { OrvDebug("a").debug() << "off"; }).join();
        quint64 next = 0;
        std::thread([&next] { next = threadId(); }).join();
        std::exit(static_cast<int>(next - own));
    });
    EXPECT_EQ(ending.exitCode, 2);
}

TEST(OrvDebug, ForkedProcessHasAThreadOfItsOwn)
{
    const quint64 own = threadId();
    const Ending ending = runInChild([own] { std::exit(threadId() > own ? 7 : 8); });
    EXPECT_EQ(ending.exitCode, 7);
}

TEST(OrvDebug, OutputGoesPastTheLog)
{
    const QTemporaryDir folder;
    const QString output = folder.filePath(QStringLiteral("output"));
    expectInChild(
        [] {
            const Collector collector;
            OrvDebug::output() << "plain";
            OrvDebug::output() << " text" << 7;
            EXPECT_EQ(&OrvDebug::output(), &OrvDebug::output());
            EXPECT_TRUE(messages.empty());
        },
        output);
    EXPECT_EQ(contentOf(output), "plain text7");
}

TEST(OrvDebug, FullDebugIsSilent)
{
    const Collector collector;
    {
        const OrvFullDebug timing("a", QStringLiteral("text"));
    }
    EXPECT_THAT(messages, testing::IsEmpty());
}

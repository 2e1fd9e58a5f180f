#include <Orv/Log/OrvDebug.h>

#include "Log/ChildProcess.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <mutex>
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
    const std::tuple<QDebug (OrvDebug::*)() const, QtMsgType, const char*> rows[] = {
        {&OrvDebug::debug, QtDebugMsg, "d.orv.log"}, {&OrvDebug::debugOnly, QtDebugMsg, "d.orv.log"},
        {&OrvDebug::info, QtInfoMsg, "0.orv.log"}, {&OrvDebug::infoH, QtInfoMsg, "1.orv.log"},
        {&OrvDebug::warning, QtWarningMsg, "default"}, {&OrvDebug::critical, QtCriticalMsg, "default"},
        {&OrvDebug::error, QtCriticalMsg, "default"}};
    const Collector collector;
    const OrvDebug log("Engine");
    for (const auto& [open, type, category] : rows) {
        messages.clear();
        (log.*open)() << QStringLiteral("a \"text\"") << 7;
        ASSERT_EQ(messages.size(), 1u) << category;
        EXPECT_EQ(messages[0].type, type) << category;
        EXPECT_EQ(messages[0].category, category);
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
    expectInChild([] {
        QLoggingCategory::setFilterRules(QStringLiteral("d.orv.log.debug=false"));
        const quint64 own = threadId();
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

TEST(OrvDebug, ForkedProcessHasAThreadOfItsOwn)
{
    const quint64 own = threadId();
    expectInChild([own] { EXPECT_GT(threadId(), own); });
}

TEST(OrvDebug, OutputGoesPastTheLog)
{
    const QTemporaryDir folder;
    const QString output = folder.filePath(QStringLiteral("output"));
    expectInChild(
        [] {
            const Collector collector;
            const OrvFullDebug timing("a", QStringLiteral("nothing of this")); // is silent
            OrvDebug::output() << "plain";
            OrvDebug::output() << " text" << 7;
            EXPECT_EQ(&OrvDebug::output(), &OrvDebug::output());
            EXPECT_TRUE(messages.empty());
        },
        output);
    EXPECT_EQ(contentOf(output), "plain text7");
}

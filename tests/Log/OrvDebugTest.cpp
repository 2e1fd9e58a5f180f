#include "Log/LogTest.h"

#include <algorithm>
#include <array>

using OrvDebugTest = LogTest;

TEST_F(OrvDebugTest, Levels)
{
    const std::tuple<QDebug (OrvDebug::*)() const, const char*, const char*> openers[] = {
        {&OrvDebug::debug, "DEBUG", "d.orv.log"}, {&OrvDebug::debugOnly, "DEBUG", "d.orv.log"},
        {&OrvDebug::infoH, "INFO", "1.orv.log"}, {&OrvDebug::info, "INFO", "0.orv.log"},
        {&OrvDebug::warning, "WARNING", "default"}, {&OrvDebug::critical, "ERROR", "default"},
        {&OrvDebug::error, "ERROR", "default"}};
    const auto debugOff = static_cast<LogManager::LogLevel>(-1); // setDebug(false)
    const std::pair<std::vector<LogManager::LogLevel>, int> rows[] = {{{}, 4}, {{LogManager::Disabled}, 0},
        {{LogManager::Info}, 4}, {{LogManager::InfoHigh}, 5}, {{LogManager::Debug}, 7},
        {{LogManager::Debug, static_cast<LogManager::LogLevel>(9)}, 4}, {{LogManager::Debug, debugOff}, 5},
        {{LogManager::InfoHigh, LogManager::Disabled}, 0},
        {{LogManager::InfoHigh, LogManager::Disabled, LogManager::Info}, 4}};
    for (const auto& [levels, count] : rows) {
        Lines expected;
        for (auto opener = std::end(openers) - count; opener != std::end(openers); ++opener) {
            expected.push_back(std::string("[") + std::get<1>(*opener) + "]: [ Engine ] [ N ] a \"text\" 7");
            expected.insert(
                expected.end(), {"\tFunction: ", std::string("\tCategory: ") + std::get<2>(*opener), "\tLine: 0"});
        }
        const auto work = [&, &levels = levels] {
            for (const auto level : levels)
                level == debugOff ? manager().setDebug(false) : manager().setLogLevel(level);
            EXPECT_EQ(manager().isDebug(), !levels.empty() && levels.back() == LogManager::Debug);
            manager().setVerbose(true);
            manager().init();
            for (const auto& opener : openers)
                (OrvDebug("Engine").*std::get<0>(opener))() << QStringLiteral("a \"text\"") << 7;
        };
        EXPECT_EQ(logged(work), expected) << testing::PrintToString(levels);
        EXPECT_EQ(contentOf(output()).size(), 0);
    }
    EXPECT_EQ(OrvDebug("a").debugOnly().verbosity(), 0);
    EXPECT_EQ(OrvDebug("a").debug().verbosity(), QDebug::DefaultVerbosity);
}

TEST_F(OrvDebugTest, ThreadNumbers)
{
    const quint64 ofParent = threadId();
    expectInChild([ofParent] {
        QLoggingCategory::setFilterRules(QStringLiteral("d.orv.log.debug=false"));
        const quint64 own = threadId();
        EXPECT_GT(own, ofParent) << "a forked process has a new thread";
        inThreads(1, [](int) { OrvDebug("a").debug() << "off"; }); // numbers its thread too
        std::array<quint64, 8> numbers{};
        inThreads(8, [&numbers](int thread) { numbers[std::size_t(thread)] = threadId(); });
        std::sort(numbers.begin(), numbers.end());
        for (std::size_t i = 0; i < numbers.size(); ++i)
            EXPECT_EQ(numbers[i], own + 2 + i);
        EXPECT_EQ(threadId(), own);
    });
}

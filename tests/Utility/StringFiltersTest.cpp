#include <Orv/Utility/StringFilters.h>

using Orv::Utility::StringFilters;

TEST(StringFilters, PrefixFilter)
{
    EXPECT_EQ(StringFilters::prefixFilter(QStringLiteral(" a/b\\c:d*e?f\"g>h<i|j. ")), " abcdefghij. ");
    EXPECT_EQ(StringFilters::prefixFilter(QStringLiteral("//**")), QString());
    EXPECT_EQ(StringFilters::prefixFilter(QString()), QString());
}

TEST(StringFilters, RemoveTrailingChar)
{
    const std::pair<const char*, const char*> rows[] = {
        {"path///", "path"}, {"///", ""}, {"a/b", "a/b"}, {"/a//b/", "/a//b"}, {" a //", " a "}, {"", ""}};
    for (const auto& [text, expected] : rows)
        EXPECT_EQ(StringFilters::removeTrailingChar(text, QLatin1Char('/')), expected) << text;
}

TEST(StringFilters, Escape)
{
    const std::pair<const char*, const char*> rows[] = {{R"(a"b)", R"(a\"b)"}, {R"(a\b)", R"(a\\b)"},
        {R"(ab")", R"(ab\")"}, {R"(\"\)", R"(\\\"\\)"}, {"plain", "plain"}, {"", ""}};
    for (const auto& [text, expected] : rows)
        EXPECT_EQ(StringFilters::escape(text), expected) << text;
}

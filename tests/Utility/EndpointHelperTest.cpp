#include <Orv/Utility/EndpointHelper.h>

#include <gtest/gtest.h>

#include <optional>

using Orv::Utitlity::EndpointHelper;

namespace {

struct Row {
    const char* input;
    std::optional<bool> byDefault; // none if the result is the same for both
    bool useSsl;
    const char* endpoint;
    const char* withScheme;
    bool hasError = false;
};

const Row Rows[] = {
    {"https://srv:8443/api/", {}, true, "//srv:8443/api/", "https://srv:8443/api/"},
    {"http://srv", {}, false, "//srv", "http://srv"},
    {"srv", true, true, "//srv", "https://srv"},
    {"srv", false, false, "//srv", "http://srv"},
    {"  u:p@srv:80/x  ", true, true, "//srv:80/x", "https://srv:80/x"},
    {"//srv:443", false, false, "//srv:443", "http://srv:443"},
    {":::/srv", true, true, "//srv", "https://srv"},
    {"srv:0080", true, true, "//srv:80", "https://srv:80"},
    {"srv/", true, true, "//srv/", "https://srv/"},
    {"srv/path:8080", true, true, "//srv/path:8080", "https://srv/path:8080"},
    {"srv/path@other", true, true, "//other", "https://other"},
    {"srv:0", true, true, "srv:0", "srv:0", true},
    {"srv:", true, true, "srv:", "srv:", true},
    {"srv:80x/y", true, true, "srv:80x/y", "srv:80x/y", true},
    {"HTTPS://srv", false, false, "HTTPS://srv", "HTTPS://srv", true},
    {"ftp://srv", true, true, "ftp://srv", "ftp://srv", true},
    {"", true, false, "", "http:"},
    {"   ", true, true, "", "https:"},
    {"https://", false, true, "", "https:"},
    // Beyond the everyday: no bound for the port but the number's, nothing but the first "@", and white space is kept
    // with what could not be understood.
    {"srv:99999", true, true, "//srv:99999", "https://srv:99999"},
    {"srv:2147483648", true, true, "srv:2147483648", "srv:2147483648", true},
    {"srv:-1", true, true, "srv:-1", "srv:-1", true},
    {"a@b@srv", true, true, "//b@srv", "https://b@srv"},
    {"u@:80/x", true, true, "//:80/x", "https://:80/x"},
    {"u@:080/x", true, true, "//:080/x", "https://:080/x"},
    {"u@/x", true, true, "///x", "https:///x"},
    {" srv:x ", false, false, " srv:x ", " srv:x ", true},
    {"http://https://srv", true, false, "http://https://srv", "http://https://srv", true},
    {"srv:80/Path/?Q=A:B", true, true, "//srv:80/Path/?Q=A:B", "https://srv:80/Path/?Q=A:B"},
};

void check(const Row& row, bool byDefault)
{
    SCOPED_TRACE(row.input);
    const EndpointHelper helper(row.input, byDefault);
    EXPECT_EQ(helper.useSsl(), row.useSsl);
    EXPECT_EQ(helper.endpoint(), QString(row.endpoint));
    EXPECT_EQ(helper.endpointWithScheme(), QString(row.withScheme));
    EXPECT_EQ(helper.hasError(), row.hasError);
    EXPECT_EQ(helper.lastErrorMessage(), row.hasError ? QStringLiteral("Can't parse endpoint") : QString());
    EXPECT_EQ(helper.lastErrorMessage().isNull(), !row.hasError);
    EXPECT_EQ(EndpointHelper::toEndpointWithScheme(row.input, byDefault), QString(row.withScheme));
}

} // namespace

TEST(EndpointHelper, Addresses)
{
    for (const Row& row : Rows) {
        for (const bool byDefault : {false, true}) {
            if (byDefault == row.byDefault.value_or(byDefault))
                check(row, byDefault);
        }
    }
}

TEST(EndpointHelper, ConvertsAgain)
{
    EndpointHelper helper(QStringLiteral("srv:x"), false);
    EXPECT_TRUE(helper.hasError());
    helper.convert(QStringLiteral("srv:1"), true);
    EXPECT_FALSE(helper.hasError());
    EXPECT_TRUE(helper.lastErrorMessage().isNull());
    EXPECT_EQ(helper.endpointWithScheme(), QStringLiteral("https://srv:1"));
    helper.setUseSsl(false);
    EXPECT_EQ(helper.endpointWithScheme(), QStringLiteral("http://srv:1"));

    EXPECT_EQ(EndpointHelper::toEndpoint(QStringLiteral("http://srv/")), QStringLiteral("//srv/"));
    EXPECT_EQ(EndpointHelper::toPair(QStringLiteral("srv")), qMakePair(QStringLiteral("//srv"), true));
    EXPECT_EQ(EndpointHelper::toPair(QStringLiteral("http://srv")), qMakePair(QStringLiteral("//srv"), false));
}

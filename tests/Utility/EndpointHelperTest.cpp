#include <Orv/Utility/EndpointHelper.h>

#include "KnownAnswers.h"

using Orv::Utitlity::EndpointHelper;

TEST(EndpointHelper, Addresses)
{
    for (const KnownAnswer& row : tableOfAnswers("endpoints.txt")) {
        const QString address = row["address"];
        const bool hasError = row["error"] == "yes";
        for (const bool byDefault : {false, true}) {
            if (row["default"] == (byDefault ? "no" : "yes"))
                continue;
            SCOPED_TRACE(row["row"].constData());
            const EndpointHelper helper(address, byDefault);
            EXPECT_EQ(helper.useSsl(), row["tls"] == "yes");
            EXPECT_EQ(helper.endpoint(), row["endpoint"]);
            EXPECT_EQ(helper.endpointWithScheme(), row["with scheme"]);
            EXPECT_EQ(helper.hasError(), hasError);
            EXPECT_EQ(helper.lastErrorMessage(), hasError ? "Can't parse endpoint" : "");
            EXPECT_EQ(helper.lastErrorMessage().isNull(), !hasError);
            EXPECT_EQ(EndpointHelper::toEndpointWithScheme(address, byDefault), row["with scheme"]);
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

#include "KnownAnswers.h"
#include "Log/LoggedLines.h"
#include "Mac/CloudItem_p.h"

#include <Orv/Mac/FileProviderMac.h>

#include <QProcess>

#include <gmock/gmock.h>

using Orv::Utility::CloudItem;
using Orv::Utility::CloudSetup;
using Orv::Utility::FileProviderMac;

namespace {

/// A fake of the system with fixed results.
struct FakeItem : CloudItem {
    FakeItem(bool ubiquitous, const QString& status, bool accepting)
        : isInCloud(ubiquitous), statusText(status), accepts(accepting)
    {
    }

    const bool isInCloud;
    const QString statusText;
    const bool accepts;
    int requests = 0;
    CloudSetup cloud = {"anna", "Anna Smith", "/Users/anna", "<token>", "file:///cloud/"};

    QString path() const override { return "/Users/anna/file"; }
    CloudSetup setup() const override { return cloud; }
    bool isUbiquitous() const override { return isInCloud; }
    QString status() const override { return statusText; }
    Statuses statuses() const override { return {"newest", "here", "in the cloud"}; }
    bool startDownloading() override { return ++requests > 0 && accepts; }
};

struct Provider : FileProviderMac {
    explicit Provider(FakeItem* item) : FileProviderMac(std::unique_ptr<CloudItem>(item), nullptr) { }
};

QString environment()
{
    return "debug: (" + QProcess::systemEnvironment().join(", ") + ')';
}

} // namespace

TEST(FileProviderMac, StatesAndSignals)
{
    for (const KnownAnswer& row : tableOfAnswers("cloud.txt")) {
        SCOPED_TRACE(row["row"].constData());
        const auto number = [&row](const char* column) { return row[column].toInt(); };
        LoggedLines log;
        auto* const item = new FakeItem(number("ubiquitous"), row["system status"], number("accepts"));
        Provider provider(item);
        int signalCount = 0;
        QObject::connect(&provider, &FileProviderMac::downloadingStarted, [&signalCount] { ++signalCount; });
        EXPECT_EQ(provider.isUbiquitous(), number("ubiquitous"));
        EXPECT_EQ(provider.downloadingStatus(), number("status"));
        EXPECT_EQ(item->requests, 0);
        EXPECT_EQ(log.take().size(), 2 * 2) << "two messages per query";
        for (int call = 1; call <= 2; ++call) {
            provider.startDownloading();
            EXPECT_EQ(item->requests, call * number("request"));
            EXPECT_EQ(signalCount, call * number("signal"));
            EXPECT_EQ(log.take().size(), 2);
        }
    }
}

TEST(FileProviderMac, Trace)
{
    const QString trace = "debug: \n################################################################################ "
                          "\n\turl path: /Users/anna/file \n\tis ubiquitous: %1 \n\tuser name: anna "
                          "\n\tfull user name: Anna Smith \n\thome directory for current user: /Users/anna "
                          "\n\tubiquity identity token: %2 \n\troot url: %3 "
                          "\n################################################################################";
    for (const bool is : {true, false}) {
        auto* const item = new FakeItem(is, QString(), true);
        if (!is)
            item->cloud.identityToken = item->cloud.rootUrl = QString();
        LoggedLines log;
        Provider(item).isUbiquitous();
        const QString block = is ? trace.arg("YES", "<token>", "file:///cloud/") : trace.arg("NO", "(null)", QString());
        EXPECT_EQ(log.take(), QStringList({block, environment()}));
    }
}

TEST(FileProviderMac, LocalFile)
{
    LoggedLines log;
    QObject parent;
    FileProviderMac provider("/etc/hosts", &parent);
    EXPECT_EQ(provider.parent(), &parent);
    EXPECT_FALSE(provider.isUbiquitous());
    EXPECT_EQ(provider.downloadingStatus(), FileProviderMac::Unknown);
    const QStringList trace = log.take();
    ASSERT_EQ(trace.size(), 4);
    EXPECT_THAT(trace[0].toStdString(), testing::HasSubstr("\n\turl path: /etc/hosts \n\tis ubiquitous: NO \n"));
    EXPECT_EQ(trace[1], environment());
}

#include "Log/LoggedLines.h"
#include "Mac/CloudItem_p.h"

#include <Orv/Mac/FileProviderMac.h>

#include <QProcess>

#include <gtest/gtest.h>

using Orv::Utility::CloudItem;
using Orv::Utility::CloudSetup;
using Orv::Utility::FileProviderMac;

namespace {

/// What the system would answer.
struct Answers {
    bool isUbiquitous = true;
    QString status = QStringLiteral("in the cloud");
    bool accepts = true;
    CloudSetup setup = {"anna", "Anna Smith", "/Users/anna", "<token>", "file:///cloud/"};
};

class StandIn : public CloudItem {
public:
    explicit StandIn(const Answers& answers, int* requests) : m_answers(answers), m_requests(requests) { }

    QString path() const override { return "/Users/anna/file"; }
    CloudSetup setup() const override { return m_answers.setup; }
    bool isUbiquitous() const override { return m_answers.isUbiquitous; }
    QString status() const override { return m_answers.status; }
    Statuses statuses() const override { return {"newest", "here", "in the cloud"}; }
    bool startDownloading() override
    {
        ++*m_requests;
        return m_answers.accepts;
    }

private:
    const Answers m_answers;
    int* const m_requests;
};

class Provider : public FileProviderMac {
public:
    explicit Provider(const Answers& answers) : FileProviderMac(std::make_unique<StandIn>(answers, &requests), nullptr)
    {
        connect(this, &FileProviderMac::downloadingStarted, [this] { ++signalCount; });
    }

    int requests = 0;
    int signalCount = 0;
};

QString block(const QString& path, const char* isUbiquitous, const CloudSetup& setup, const QString& token)
{
    const QString ruler = "\n################################################################################";
    return "debug: " + ruler + " \n\turl path: " + path + " \n\tis ubiquitous: " + isUbiquitous +
        " \n\tuser name: " + setup.userName + " \n\tfull user name: " + setup.fullUserName +
        " \n\thome directory for current user: " + setup.homeDirectory + " \n\tubiquity identity token: " + token +
        " \n\troot url: " + setup.rootUrl + ' ' + ruler;
}

QString environment()
{
    return "debug: (" + QProcess::systemEnvironment().join(", ") + ')';
}

} // namespace

TEST(FileProviderMac, StatesAndSignals)
{
    struct Row {
        Answers answers;
        int status;
        int requests;
        int signalCount;
    };
    const Row rows[] = {
        {{true, "newest"}, 0, 0, 0},
        {{true, "here"}, 1, 0, 0},
        {{true, "in the cloud"}, 2, 1, 1},
        {{true, "in the cloud", false}, 2, 1, 0},
        {{true, "something new"}, 3, 0, 0},
        {{true, QString()}, 3, 0, 0},
        {{false, "in the cloud"}, 3, 0, 0},
    };
    for (const Row& row : rows) {
        LoggedLines log;
        Provider provider(row.answers);
        EXPECT_EQ(provider.isUbiquitous(), row.answers.isUbiquitous) << row.answers.status;
        EXPECT_EQ(provider.downloadingStatus(), row.status) << row.answers.status;
        EXPECT_EQ(provider.requests, 0) << row.answers.status;
        EXPECT_EQ(log.take().size(), 2 * 2) << "a trace for each question";
        for (int call = 1; call <= 2; ++call) {
            provider.startDownloading();
            EXPECT_EQ(provider.requests, call * row.requests) << row.answers.status;
            EXPECT_EQ(provider.signalCount, call * row.signalCount) << row.answers.status;
            EXPECT_EQ(log.take().size(), 2);
        }
    }
}

TEST(FileProviderMac, Trace)
{
    Answers answers;
    LoggedLines log;
    Provider(answers).isUbiquitous();
    EXPECT_EQ(log.take(), QStringList({block("/Users/anna/file", "YES", answers.setup, "<token>"), environment()}));
    answers.isUbiquitous = false;
    answers.setup.identityToken = QString();
    answers.setup.rootUrl = QString();
    Provider(answers).isUbiquitous();
    EXPECT_EQ(log.take(), QStringList({block("/Users/anna/file", "NO", answers.setup, "(null)"), environment()}));
}

TEST(FileProviderMac, LocalFile)
{
    LoggedLines log;
    FileProviderMac provider("/etc/hosts", nullptr);
    bool isStarted = false;
    QObject::connect(&provider, &FileProviderMac::downloadingStarted, [&isStarted] { isStarted = true; });
    EXPECT_FALSE(provider.isUbiquitous());
    EXPECT_EQ(provider.downloadingStatus(), FileProviderMac::Unknown);
    provider.startDownloading();
    EXPECT_FALSE(isStarted);
    const QStringList trace = log.take();
    ASSERT_EQ(trace.size(), 6);
    EXPECT_TRUE(trace[0].contains("\n\turl path: /etc/hosts \n\tis ubiquitous: NO \n")) << trace[0];
    EXPECT_EQ(trace[1], environment());
    EXPECT_STREQ(provider.metaObject()->className(), "Orv::Utility::FileProviderMac");
}

#include <Orv/Utility/StreamCopy.h>

#include "Log/LoggedLines.h"
#include "Utility/ChunkedDevice.h"

#include <QBuffer>

#include <limits>

using Orv::Utility::StreamCopy;
using Device = ChunkedDevice;
using Sizes = std::vector<qint64>;

TEST(StreamCopy, ReadsWritesAndLimits)
{
    constexpr qint64 Huge = std::numeric_limits<qint64>::max();
    struct Row {
        int sourceSize;
        qint64 chunkSize;
        qint64 maxBytes;
        qint64 copied;
        Sizes requests;
    };
    const Row rows[] = {{10, 4, 0, 10, {4, 4, 4}}, {10, 4, 6, 6, {4, 2}}, {10, 4, 10, 10, {4, 4, 2}},
        {10, 4, Huge, 10, {4, 4, 4}}, {10, 100, 0, 10, {100}}, {10, 4, -1, 0, {}}, {10, -4, -1, 0, {}},
        {10, 4, std::numeric_limits<qint64>::min(), 0, {}}, {0, 4, 0, 0, {}},
        {10, Huge, Huge, 10, {std::numeric_limits<int>::max() - qint64(sizeof(QByteArrayData)) - 1}}};
    for (const Row& row : rows) {
        for (const bool sequential : {false, true}) {
            SCOPED_TRACE(testing::Message() << row.sourceSize << ' ' << row.chunkSize << ' ' << row.maxBytes);
            Device source(QIODevice::ReadOnly, sequential);
            source.content = QByteArray("0123456789").left(row.sourceSize);
            Device destination(QIODevice::WriteOnly);
            EXPECT_EQ(StreamCopy(row.chunkSize).exec(destination, source, row.maxBytes), row.copied);
            EXPECT_EQ(destination.content, source.content.left(int(row.copied)));
            EXPECT_EQ(source.requests, row.requests);
            EXPECT_EQ(source.size() - source.bytesAvailable(), row.copied) << "reads no further";
        }
    }
}

TEST(StreamCopy, ShortReads)
{
    Device source(QIODevice::ReadOnly, true);
    source.content = "0123456789";
    source.chunks = {3, 0, 0, 3, 3, 3}; // the first request uses the second element
    Device destination(QIODevice::WriteOnly);
    EXPECT_EQ(StreamCopy(4).exec(destination, source, 8), 8);
    EXPECT_EQ(destination.content, QByteArray("01234567"));
    EXPECT_EQ(source.requests, Sizes({4, 4, 4, 4, 2}));
}

TEST(StreamCopy, Failures)
{
    Device source(QIODevice::ReadOnly, true);
    source.content = "0123456789";
    source.limit = 7;
    Device destination(QIODevice::WriteOnly);
    LoggedLines logged;
    EXPECT_EQ(StreamCopy(4).exec(destination, source, 0), 7) << "copied before the source failed";
    EXPECT_EQ(destination.content, QByteArray("0123456"));
    EXPECT_EQ(logged.take(), QStringList());

    Device whole(QIODevice::ReadOnly);
    whole.content = "0123456789";
    Device narrow(QIODevice::WriteOnly);
    narrow.limit = 6;
    EXPECT_EQ(StreamCopy(4).exec(narrow, whole, 0), -1);
    EXPECT_EQ(narrow.content, QByteArray("012345")) << "accepted data stays";
    EXPECT_EQ(logged.take(), QStringList(QStringLiteral("error: StreamCopy: error write to destination stream")));

    whole.requests.clear();
    QBuffer closed;
    EXPECT_EQ(StreamCopy(4).exec(whole, whole, 0), -1);
    EXPECT_EQ(StreamCopy(4).exec(closed, whole, 0), -1);
    EXPECT_EQ(StreamCopy(4).exec(destination, closed, 0), -1);
    EXPECT_EQ(StreamCopy(4).exec(destination, destination, 0), -1);
    EXPECT_EQ(whole.requests, Sizes());
    EXPECT_EQ(logged.take(), QStringList());
}

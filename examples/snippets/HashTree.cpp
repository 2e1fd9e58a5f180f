// The fingerprint of a stream of any length, in one pass: the hash tree over the MD5 of each chunk.
#include <Orv/Core/LiveHashTree.h>

#include <QBuffer>
#include <QCryptographicHash>

static QByteArray md5(const QByteArray& data)
{
    return QCryptographicHash::hash(data, QCryptographicHash::Md5);
}

static QByteArray fingerprint(QIODevice& source, qint64 chunkSize)
{
    Orv::Core::MD5LiveHashTree tree;
    do
        tree.addNextHash(md5(source.read(chunkSize))); // an empty stream has one empty chunk
    while (!source.atEnd());
    tree.finish();
    return tree.getFinalHash(); // 16 raw bytes
}

int main()
{
    QByteArray data = "aaabbbcc";
    QBuffer source(&data);
    source.open(QIODevice::ReadOnly);
    // The first two chunks have a parent; the third is promoted to its level unchanged.
    return fingerprint(source, 3) == md5(md5(md5("aaa") + md5("bbb")) + md5("cc")) ? 0 : 1;
}

// The fingerprint of a stream of any length, in one pass: the tree over the MD5 of each part.
#include <Orv/Core/LiveHashTree.h>

#include <QBuffer>
#include <QCryptographicHash>

static QByteArray md5(const QByteArray& data)
{
    return QCryptographicHash::hash(data, QCryptographicHash::Md5);
}

static QByteArray fingerprint(QIODevice& source, qint64 partSize)
{
    Orv::Core::MD5LiveHashTree tree;
    do
        tree.addNextHash(md5(source.read(partSize))); // an empty stream has one empty part
    while (!source.atEnd());
    tree.finish();
    return tree.getFinalHash(); // 16 raw bytes
}

int main()
{
    QByteArray data = "aaabbbcc";
    QBuffer source(&data);
    source.open(QIODevice::ReadOnly);
    // Two parts have a parent; the third one is lifted to its level as it is.
    return fingerprint(source, 3) == md5(md5(md5("aaa") + md5("bbb")) + md5("cc")) ? 0 : 1;
}

#pragma once

#include <Orv/Core/LiveHashTree.h>

#include <QByteArray>
#include <QCryptographicHash>

namespace orvseal {

/// The fingerprint of a file's content, taken while it streams by: the hash tree over the MD5 of each MiB. An empty
/// file has one empty part.
class TreeHash {
public:
    void addData(const char* data, qint64 size);
    /// Nothing can be added afterwards.
    QByteArray finish();

private:
    void endPart();

    QCryptographicHash m_part{QCryptographicHash::Md5};
    qint64 m_partSize = 0;
    Orv::Core::MD5LiveHashTree m_tree;
};

} // namespace orvseal

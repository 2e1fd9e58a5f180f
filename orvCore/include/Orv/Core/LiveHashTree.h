#pragma once

#include <Orv/Export.h>

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QSharedPointer>
#include <QStack>
#include <QString>

namespace Orv::Core {

/// The root of a subtree: a raw digest (not hex) and its height, 0 for a leaf.
class ORV_EXPORT LiveHashTreeNode {
public:
    /// Creates a leaf from the raw digest of a chunk of the stream.
    explicit LiveHashTreeNode(const QByteArray& hash);
    virtual ~LiveHashTreeNode();

    /// Returns the hash of a parent, given the hashes of its children.
    virtual QByteArray concatenateHashes(const QByteArray& left, const QByteArray& right) const = 0;

    /// The height: 0 for a leaf.
    int level() const { return m_level; }
    /// The raw digest.
    const QByteArray& hash() const { return m_hash; }

    /// Replaces this node by the parent of itself (left child) and `right`, one level higher.
    void merge(const LiveHashTreeNode& right);
    /// Sets the level and keeps the hash.
    void promoteToLevel(int level);
    /// "Level: 0, hash: 01ab", the hash in lower-case hex.
    QString toString() const;

private:
    int m_level = 0;
    QByteArray m_hash;
};

/// A node whose parent's hash is the MD5 (RFC 1321) of the left hash followed by the right hash: 16 bytes.
class ORV_EXPORT MD5LiveHashTreeNode : public LiveHashTreeNode {
public:
    using LiveHashTreeNode::LiveHashTreeNode;
    ~MD5LiveHashTreeNode() override;
    QByteArray concatenateHashes(const QByteArray& left, const QByteArray& right) const override;
};

/// Combines a sequence of leaf hashes into one tree hash incrementally, so a stream of any length is fingerprinted in
/// one pass. At most one subtree per level is pending: about log2 of the number of leaves.
///
/// The caller hashes the chunks of the stream; leaves may have any length. Two adjacent subtrees of the same level are
/// merged at once. At the end, a remaining subtree on the right is promoted to the level of its left neighbour
/// unchanged, without padding or rehashing. So the hash of a single leaf is the leaf itself, that of three leaves is
/// H(H(A, B), C), and that of five is H(H(H(A, B), H(C, D)), E).
///
/// Not thread-safe. Misuse throws `Orv::Exception::Base`.
class ORV_EXPORT LiveHashTree {
public:
    LiveHashTree();
    virtual ~LiveHashTree();
    // A copy would share its nodes, and merging changes them.
    LiveHashTree(const LiveHashTree&) = delete;
    LiveHashTree& operator=(const LiveHashTree&) = delete;

    /// Returns a new leaf of the tree's node type.
    virtual QSharedPointer<LiveHashTreeNode> createNode(const QByteArray& hash) const = 0;

    /// Adds the next leaf. After `finish()`, call `reset()` first; this is not checked.
    void addNextHash(const QByteArray& hash);
    /// Merges the last two subtrees while they have the same level. `addNextHash` already does this.
    void contract();
    /// Combines the pending subtrees into the root. Without any leaf, logs an error and throws; the tree still accepts
    /// leaves.
    void finish();
    /// Whether `finish()` has succeeded since the last `reset()`.
    bool finished() const { return m_finished; }
    /// Returns the root's hash. Throws before `finish()`.
    QByteArray getFinalHash() const;
    /// Returns the pending subtrees as (level, hash) pairs, the oldest and highest first. Throws after `finish()`.
    QList<QPair<int, QByteArray>> getCurrentState() const;
    /// Replaces all leaves by a state that `getCurrentState()` returned, for example to resume an interrupted upload.
    /// Throws, and changes nothing, unless the levels are non-negative and strictly decreasing.
    void setCurrentState(const QList<QPair<int, QByteArray>>& state);
    /// Removes all leaves.
    void reset();

private:
    QStack<QSharedPointer<LiveHashTreeNode>> m_stack;
    bool m_finished = false;
};

/// A hash tree with MD5 nodes.
class ORV_EXPORT MD5LiveHashTree : public LiveHashTree {
public:
    ~MD5LiveHashTree() override;
    QSharedPointer<LiveHashTreeNode> createNode(const QByteArray& hash) const override;
};

} // namespace Orv::Core

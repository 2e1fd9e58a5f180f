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
    /// A leaf: the raw digest of a part of the stream.
    explicit LiveHashTreeNode(const QByteArray& hash);
    virtual ~LiveHashTreeNode();

    /// The hash of a parent from the hashes of its children.
    virtual QByteArray concatenateHashes(const QByteArray& left, const QByteArray& right) const = 0;

    /// The height: 0 for a leaf.
    int level() const { return m_level; }
    /// The raw digest.
    const QByteArray& hash() const { return m_hash; }

    /// Becomes the parent of what it was, on the left, and of `right`: one level higher.
    void merge(const LiveHashTreeNode& right);
    /// Takes the level as it is given; the hash stays.
    void promoteToLevel(int level);
    /// "Level: 0, hash: 01ab", the hash in lower-case hex.
    QString toString() const;

private:
    int m_level = 0;
    QByteArray m_hash;
};

/// A node whose parents are the MD5 (RFC 1321) of the left hash followed by the right one: 16 bytes.
class ORV_EXPORT MD5LiveHashTreeNode : public LiveHashTreeNode {
public:
    using LiveHashTreeNode::LiveHashTreeNode;
    ~MD5LiveHashTreeNode() override;
    QByteArray concatenateHashes(const QByteArray& left, const QByteArray& right) const override;
};

/// Folds a sequence of leaf hashes into one tree hash while they arrive, so that a stream of any length is
/// fingerprinted in one pass: no more than one subtree a level is pending, about log2 of the number of leaves.
///
/// Leaves are hashed by the caller, one a part of the stream, and may have any length. Neighbours of the same level are
/// merged as soon as there are two. At the end, what is left over on the right is lifted to its neighbour's level as it
/// is, neither padded nor hashed again; so the hash of a single leaf is the leaf itself, that of three is
/// H(H(A, B), C), and that of five is H(H(H(A, B), H(C, D)), E).
///
/// One thread at a time. Misuse throws `Orv::Exception::Base`.
class ORV_EXPORT LiveHashTree {
public:
    LiveHashTree();
    virtual ~LiveHashTree();
    // A copy would share its nodes, which merging changes.
    LiveHashTree(const LiveHashTree&) = delete;
    LiveHashTree& operator=(const LiveHashTree&) = delete;

    /// A leaf of the tree's kind.
    virtual QSharedPointer<LiveHashTreeNode> createNode(const QByteArray& hash) const = 0;

    /// Adds the next leaf. After `finish()` the tree has to be `reset()` first, which is not checked.
    void addNextHash(const QByteArray& hash);
    /// Merges the youngest subtrees for as long as the last two have the same level. `addNextHash` does that already.
    void contract();
    /// Folds what is pending into the root. Without any leaf, logs an error and throws; the tree then goes on
    /// collecting.
    void finish();
    /// Whether `finish()` has been called with success since the last `reset()`.
    bool finished() const { return m_finished; }
    /// The root's hash. Throws before `finish()`.
    QByteArray getFinalHash() const;
    /// The pending subtrees, the oldest and highest first, as level and hash. Throws after `finish()`.
    QList<QPair<int, QByteArray>> getCurrentState() const;
    /// Continues from a state that `getCurrentState()` returned, for instance after an interrupted upload, in place of
    /// all leaves so far. Throws, with nothing changed, unless the levels are 0 or more and fall from entry to entry.
    void setCurrentState(const QList<QPair<int, QByteArray>>& state);
    /// Begins again, without any leaf.
    void reset();

private:
    QStack<QSharedPointer<LiveHashTreeNode>> m_stack;
    bool m_finished = false;
};

/// The tree of MD5 nodes.
class ORV_EXPORT MD5LiveHashTree : public LiveHashTree {
public:
    ~MD5LiveHashTree() override;
    QSharedPointer<LiveHashTreeNode> createNode(const QByteArray& hash) const override;
};

} // namespace Orv::Core

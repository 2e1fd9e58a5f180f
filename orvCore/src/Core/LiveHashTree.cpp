#include <Orv/Core/LiveHashTree.h>

#include <Orv/Core/ModuleName.h>
#include <Orv/Exception.h>
#include <Orv/Log/OrvDebug.h>

#include <QCryptographicHash>

namespace Orv::Core {

LiveHashTreeNode::LiveHashTreeNode(const QByteArray& hash) : m_hash(hash)
{
}

LiveHashTreeNode::~LiveHashTreeNode() = default;

void LiveHashTreeNode::merge(const LiveHashTreeNode& right)
{
    m_hash = concatenateHashes(m_hash, right.hash());
    ++m_level;
}

void LiveHashTreeNode::promoteToLevel(int level)
{
    m_level = level;
}

QString LiveHashTreeNode::toString() const
{
    return QStringLiteral("Level: %1, hash: %2").arg(m_level).arg(QLatin1String(m_hash.toHex()));
}

MD5LiveHashTreeNode::~MD5LiveHashTreeNode() = default;

QByteArray MD5LiveHashTreeNode::concatenateHashes(const QByteArray& left, const QByteArray& right) const
{
    QCryptographicHash hash(QCryptographicHash::Md5);
    hash.addData(left);
    hash.addData(right);
    return hash.result();
}

LiveHashTree::LiveHashTree() = default;

LiveHashTree::~LiveHashTree() = default;

void LiveHashTree::addNextHash(const QByteArray& hash)
{
    m_stack.append(createNode(hash));
    contract();
}

void LiveHashTree::contract()
{
    while (m_stack.size() >= 2) {
        const LiveHashTreeNode& right = *m_stack.constLast();
        LiveHashTreeNode& left = *m_stack.at(m_stack.size() - 2);
        if (left.level() != right.level())
            return;
        left.merge(right);
        m_stack.removeLast();
    }
}

void LiveHashTree::finish()
{
    contract();
    while (m_stack.size() >= 2) {
        m_stack.top()->promoteToLevel(m_stack.at(m_stack.size() - 2)->level());
        contract();
    }
    if (m_stack.isEmpty()) {
        OrvDebug(CORE_MODULE_NAME).error()
            << "LiveHashTree: Live hash tree calculation failed, size != 1, size:" << m_stack.size();
        throw Exception::Base(QStringLiteral("Live hash tree calculation failed"));
    }
    m_finished = true;
}

QByteArray LiveHashTree::getFinalHash() const
{
    if (!m_finished)
        throw Exception::Base(QStringLiteral("Hash tree not finished."));
    return m_stack.top()->hash();
}

QList<QPair<int, QByteArray>> LiveHashTree::getCurrentState() const
{
    if (m_finished)
        throw Exception::Base(QStringLiteral("No state for finished tree."));
    QList<QPair<int, QByteArray>> state;
    for (const QSharedPointer<LiveHashTreeNode>& node : m_stack)
        state.append({node->level(), node->hash()});
    return state;
}

void LiveHashTree::setCurrentState(const QList<QPair<int, QByteArray>>& state)
{
    QStack<QSharedPointer<LiveHashTreeNode>> stack;
    for (const auto& [level, hash] : state) {
        if (level < 0 || (!stack.isEmpty() && level >= stack.top()->level()))
            throw Exception::Base(QStringLiteral("The levels of a hash tree's state have to fall."));
        stack.push(createNode(hash));
        stack.top()->promoteToLevel(level);
    }
    m_stack = stack;
    m_finished = false;
}

void LiveHashTree::reset()
{
    m_finished = false;
    m_stack.clear();
}

MD5LiveHashTree::~MD5LiveHashTree() = default;

QSharedPointer<LiveHashTreeNode> MD5LiveHashTree::createNode(const QByteArray& hash) const
{
    return QSharedPointer<MD5LiveHashTreeNode>::create(hash);
}

} // namespace Orv::Core

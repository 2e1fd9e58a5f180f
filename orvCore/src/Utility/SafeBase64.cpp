#include <Orv/Utility/SafeBase64.h>

#include <algorithm>

namespace Orv::Utitlity {

namespace {

char toSafe(char character)
{
    return character == '+' ? '-' : character == '=' ? '_' : character == '/' ? '~' : character;
}

/// The decoder skips what it does not know: the "_" of the padding, and the "=" that a "+" becomes.
char fromSafe(char character)
{
    return character == '-' ? '+' : character == '+' ? '=' : character == '~' ? '/' : character;
}

} // namespace

QByteArray SafeBase64::to() const
{
    QByteArray text = m_data.toBase64();
    std::transform(text.begin(), text.end(), text.begin(), toSafe);
    return text;
}

QByteArray SafeBase64::from() const
{
    QByteArray base64(m_data.size(), Qt::Uninitialized);
    std::transform(m_data.begin(), m_data.end(), base64.begin(), fromSafe);
    return QByteArray::fromBase64(base64);
}

} // namespace Orv::Utitlity

#include <Orv/Utility/SafeBase64.h>

namespace Orv::Utitlity {

QByteArray SafeBase64::to() const
{
    return m_data.toBase64().replace('+', '-').replace('=', '_').replace('/', '~');
}

QByteArray SafeBase64::from() const
{
    // The decoder skips what it does not know: the "_" of the padding, and the "=" that a "+" becomes.
    QByteArray base64 = m_data;
    base64.replace('+', '=').replace('-', '+').replace('~', '/');
    return QByteArray::fromBase64(base64);
}

} // namespace Orv::Utitlity

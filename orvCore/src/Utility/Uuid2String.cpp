#include <Orv/Utility/Uuid2String.h>

#include <Orv/Utility/Endian.h>

namespace Orv::Utitlity {

QString Uuid2String::classic(const QUuid& id)
{
    return id.toString();
}

QString Uuid2String::windows(const QUuid& id)
{
    return id.toString(QUuid::WithoutBraces);
}

QUuid Uuid2String::winBase64ToUuid(const QByteArray& bytes)
{
    return bytes.size() < 16 ? QUuid() : Endian::ToGuidLittleEndian(bytes, 0);
}

QString Uuid2String::fromWinShortGuid(const QByteArray& shortGuid)
{
    if (shortGuid.size() != 22)
        return {};
    QByteArray base64 = shortGuid;
    base64.replace('!', '/').replace('-', '+');
    return windows(winBase64ToUuid(QByteArray::fromBase64(base64 + "==")));
}

QByteArray Uuid2String::toWinShortGuid(const QUuid& id)
{
    QByteArray bytes(16, '\0');
    Endian::WriteBytesLittleEndian(id, bytes, 0);
    return bytes.toBase64(QByteArray::OmitTrailingEquals).replace('/', '!').replace('+', '-');
}

} // namespace Orv::Utitlity

#pragma once

#include <Orv/Export.h>

#include <QByteArray>
#include <QString>
#include <QUuid>

namespace Orv::Utitlity {

/// Conversions between the string and binary formats of GUIDs in the backup system. Stateless; does not throw or log.
class ORV_EXPORT Uuid2String {
public:
    /// Returns "{00112233-4455-6677-8899-aabbccddeeff}"
    static QString classic(const QUuid& id);
    /// Returns "00112233-4455-6677-8899-aabbccddeeff"
    static QString windows(const QUuid& id);
    /// Reads an id from 16 raw bytes in the Windows layout (see `Endian`); despite the name, not from Base64. Returns
    /// the null id for fewer bytes; ignores further bytes.
    static QUuid winBase64ToUuid(const QByteArray& bytes);
    /// Converts a short GUID to the format of `windows()`. A short GUID is the Base64 encoding of the Windows layout:
    /// 22 characters, without padding, with "-" for "+" and "!" for "/". Returns a null string if the input is not 22
    /// bytes long, and the null id's string if it is not valid Base64.
    static QString fromWinShortGuid(const QByteArray& shortGuid);
    /// Returns the short GUID of an id, 22 characters: the inverse of `fromWinShortGuid`.
    static QByteArray toWinShortGuid(const QUuid& id);
};

} // namespace Orv::Utitlity

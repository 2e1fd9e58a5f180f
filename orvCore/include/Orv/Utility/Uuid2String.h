#pragma once

#include <Orv/Export.h>

#include <QByteArray>
#include <QString>
#include <QUuid>

namespace Orv::Utitlity {

/// The text and binary forms of GUIDs that the backup system meets. Stateless; nothing is thrown or logged.
class ORV_EXPORT Uuid2String {
public:
    /// "{00112233-4455-6677-8899-aabbccddeeff}"
    static QString classic(const QUuid& id);
    /// "00112233-4455-6677-8899-aabbccddeeff"
    static QString windows(const QUuid& id);
    /// The id of 16 bytes in the Windows layout (see `Endian`; the bytes themselves, in spite of the name, not Base64).
    /// Fewer bytes give the null id; what comes after the 16th is ignored.
    static QUuid winBase64ToUuid(const QByteArray& bytes);
    /// The Windows text of a short GUID: the 22 characters that Base64 makes of the Windows layout, without the
    /// padding, with "-" for "+" and "!" for "/". A null string if the input is not 22 bytes long; the text of the null
    /// id if they are no Base64.
    static QString fromWinShortGuid(const QByteArray& shortGuid);
    /// The short GUID of an id, 22 characters: the inverse of `fromWinShortGuid`.
    static QByteArray toWinShortGuid(const QUuid& id);
};

} // namespace Orv::Utitlity

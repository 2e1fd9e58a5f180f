#pragma once

#include "Files.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QList>
#include <QMap>

#include <algorithm>
#include <optional>

/// Generates valid and damaged xar archives: unset fields get their correct values.
struct XarArchive {
    QMap<QByteArray, quint64> header; // by the field names in `bytes()`
    QByteArray afterHeader;           // for example the name of the algorithm
    QByteArray table;
    QByteArray heapStart; // content of the heap before the checksum
    std::optional<QByteArray> compressed;
    std::optional<QByteArray> checksum;

    QByteArray bytes() const
    {
        static const QCryptographicHash::Algorithm algorithms[] = {QCryptographicHash::Sha1, QCryptographicHash::Sha1,
            QCryptographicHash::Md5, QCryptographicHash::Sha256, QCryptographicHash::Sha512};
        const QByteArray body =
            compressed.value_or(qCompress(table).mid(4)); // qCompress() adds a length to the zlib stream
        const quint64 algorithm = header.value("algorithm", 1);
        QByteArray result;
        QDataStream stream(&result, QIODevice::WriteOnly);
        stream << static_cast<quint32>(header.value("magic", 0x78617221)) // "xar!"
               << static_cast<quint16>(header.value("size", 28 + afterHeader.size()))
               << static_cast<quint16>(header.value("version", 1)) << header.value("compressed", body.size())
               << header.value("table", table.size()) << static_cast<quint32>(algorithm);
        return result + afterHeader + body + heapStart +
            checksum.value_or(QCryptographicHash::hash(body, algorithms[std::min<quint64>(algorithm, 4)]));
    }
};

/// With Base64 in lines, like archivers.
inline QByteArray certificateElements(const QList<QByteArray>& certificates)
{
    QByteArray elements;
    for (const QByteArray& certificate : certificates) {
        const QByteArray text = certificate.toBase64();
        elements += "<X509Certificate>" + text.left(72) + '\n' + text.mid(72) + "\n</X509Certificate>\n";
    }
    return elements;
}

inline QByteArray signatureElement(const QByteArray& certificateElements)
{
    return "<signature style=\"RSA\"><offset>20</offset><size>256</size>\n"
           "<KeyInfo xmlns=\"http://www.w3.org/2000/09/xmldsig#\"><X509Data>\n" +
        certificateElements + "</X509Data></KeyInfo></signature>\n";
}

/// The checksum element of a real installer package.
const QByteArray ChecksumElement = "<checksum style=\"sha1\"><offset>0</offset><size>20</size></checksum>\n";

inline QByteArray tableOf(const QByteArray& elements)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xar>\n<toc>\n" + elements +
        "<file id=\"1\"><name>Distribution</name><type>file</type></file>\n</toc>\n</xar>\n";
}

/// An archive like a real installer package: a SHA-1 checksum and a signature with these certificates.
inline XarArchive signedArchive(const QList<QByteArray>& certificates)
{
    XarArchive archive;
    archive.table = tableOf(ChecksumElement + signatureElement(certificateElements(certificates)));
    return archive;
}

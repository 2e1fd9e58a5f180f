#pragma once

#include "Files.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QList>
#include <QMap>

#include <algorithm>
#include <optional>

/// Writes xar archives, good ones and others: what is left unset is made as it should be.
struct XarArchive {
    QMap<QByteArray, quint64> header; // by the names in `bytes`
    QByteArray afterHeader;           // the name of the algorithm, for one
    QByteArray table;
    QByteArray heapStart; // what lies in the heap before the checksum
    std::optional<QByteArray> compressed;
    std::optional<QByteArray> checksum;

    QByteArray bytes() const
    {
        static const QCryptographicHash::Algorithm algorithms[] = {QCryptographicHash::Sha1, QCryptographicHash::Sha1,
            QCryptographicHash::Md5, QCryptographicHash::Sha256, QCryptographicHash::Sha512};
        const QByteArray body = compressed.value_or(qCompress(table).mid(4)); // a plain zlib stream behind a length
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

/// With Base64 in lines, as archivers write it.
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

/// That an archive as installers come has.
const QByteArray ChecksumElement = "<checksum style=\"sha1\"><offset>0</offset><size>20</size></checksum>\n";

inline QByteArray tableOf(const QByteArray& elements)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xar>\n<toc>\n" + elements +
        "<file id=\"1\"><name>Distribution</name><type>file</type></file>\n</toc>\n</xar>\n";
}

/// An archive as installers come: a SHA-1 checksum and a signature with these certificates.
inline XarArchive signedArchive(const QList<QByteArray>& certificates)
{
    XarArchive archive;
    archive.table = tableOf(ChecksumElement + signatureElement(certificateElements(certificates)));
    return archive;
}

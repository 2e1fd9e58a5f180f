#pragma once

#include "Files.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QList>

#include <optional>

/// Writes xar archives, good ones and others: what is left unset is made as it should be.
struct XarArchive {
    QByteArray magic = "xar!";
    quint16 headerSize = 28;
    quint16 version = 1;
    quint32 algorithm = 1;
    QByteArray afterHeader; // the name of the algorithm, for one
    QByteArray table;
    QByteArray heapStart; // what lies in the heap before the checksum
    std::optional<QByteArray> compressed;
    std::optional<QByteArray> checksum;
    std::optional<quint64> compressedSize;
    std::optional<quint64> tableSize;

    QByteArray bytes() const
    {
        static const QCryptographicHash::Algorithm algorithms[] = {
            QCryptographicHash::Sha1, QCryptographicHash::Sha1, QCryptographicHash::Md5, QCryptographicHash::Sha256};
        const QByteArray body = compressed.value_or(qCompress(table).mid(4)); // a plain zlib stream behind a length
        QByteArray result;
        QDataStream stream(&result, QIODevice::WriteOnly);
        stream.writeRawData(magic.constData(), magic.size());
        stream << headerSize << version << compressedSize.value_or(body.size()) << tableSize.value_or(table.size())
               << algorithm;
        return result + afterHeader + body + heapStart +
            checksum.value_or(QCryptographicHash::hash(body, algorithms[qMin(algorithm, 3u)]));
    }
};

/// Base64 in lines, as archivers write it.
inline QByteArray inLines(const QByteArray& bytes)
{
    QByteArray text = bytes.toBase64();
    for (int end = 72; end < text.size(); end += 73)
        text.insert(end, '\n');
    return text + '\n';
}

inline QByteArray certificateElements(const QList<QByteArray>& certificates)
{
    QByteArray elements;
    for (const QByteArray& certificate : certificates)
        elements += "<X509Certificate>" + inLines(certificate) + "</X509Certificate>\n";
    return elements;
}

inline QByteArray signatureElement(const QByteArray& certificateElements, const QByteArray& name = "signature")
{
    return '<' + name +
        " style=\"RSA\"><offset>20</offset><size>256</size>\n"
        "<KeyInfo xmlns=\"http://www.w3.org/2000/09/xmldsig#\"><X509Data>\n" +
        certificateElements + "</X509Data></KeyInfo></" + name + ">\n";
}

inline QByteArray checksumElement(const QByteArray& style, quint64 size, quint64 offset = 0)
{
    return "<checksum style=\"" + style + "\"><offset>" + QByteArray::number(offset) + "</offset><size>" +
        QByteArray::number(size) + "</size></checksum>\n";
}

inline QByteArray tableOf(const QByteArray& elements)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xar>\n<toc>\n" + elements +
        "<file id=\"1\"><name>Distribution</name><type>file</type></file>\n</toc>\n</xar>\n";
}

/// An archive as installers come: a SHA-1 checksum and a signature with these certificates.
inline XarArchive signedArchive(const QList<QByteArray>& certificates)
{
    XarArchive archive;
    archive.table = tableOf(checksumElement("sha1", 20) + signatureElement(certificateElements(certificates)));
    return archive;
}

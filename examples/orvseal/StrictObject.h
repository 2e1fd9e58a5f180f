#pragma once

#include <Orv/Exception.h>

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

#include <cmath>

namespace orvseal {

inline QString hexOf(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.toHex());
}

/// Reads the members of a JSON object. Throws `Orv::Exception::InvalidData` if one is missing or invalid.
class StrictObject {
public:
    /// `source` names the origin of `json` in messages.
    StrictObject(const QByteArray& json, QString source) : m_source(std::move(source))
    {
        const QJsonDocument document = QJsonDocument::fromJson(json);
        if (!document.isObject())
            throw Orv::Exception::InvalidData(m_source + QStringLiteral(" is damaged"));
        m_object = document.object();
    }

    QString text(const char* name) const
    {
        const QJsonValue value = m_object[QLatin1String(name)];
        require(value.isString() && !value.toString().contains(QChar(0)), name);
        return value.toString();
    }

    qint64 number(const char* name, qint64 smallest, qint64 largest) const
    {
        const double value = m_object[QLatin1String(name)].toDouble(std::nan(""));
        require(value >= double(smallest) && value <= double(largest) && value == std::floor(value), name);
        return qint64(value);
    }

    /// Bytes that are stored in hex.
    QByteArray bytes(const char* name, int shortest, int longest) const
    {
        const QByteArray hex = text(name).toLatin1();
        const QByteArray value = QByteArray::fromHex(hex);
        require(value.toHex() == hex && value.size() >= shortest && value.size() <= longest, name);
        return value;
    }

    void require(bool condition, const char* name) const
    {
        if (!condition)
            throw Orv::Exception::InvalidData(
                QStringLiteral("%1 is damaged: \"%2\" is invalid").arg(m_source, QLatin1String(name)));
    }

private:
    const QString m_source;
    QJsonObject m_object;
};

} // namespace orvseal

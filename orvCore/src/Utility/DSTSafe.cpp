#include <Orv/Utility/DSTSafe.h>

#include <QTimeZone>

#include <utmpx.h>

namespace Orv::Utility {

DSTSafe::DSTSafe() : m_date(QDate::currentDate()), m_time(QTime::currentTime())
{
}

DSTSafe::DSTSafe(const QDateTime& dt) : m_date(dt.date()), m_time(dt.time())
{
}

DSTSafe DSTSafe::fromVariant(const QVariant& v)
{
    return DSTSafe(v.toDateTime());
}

QDateTime DSTSafe::check(const QDateTime& dt)
{
    if (dt.isValid())
        return dt;
    const QTimeZone::OffsetData transition = dt.timeZone().nextTransition(dt);
    const qint64 offset = qint64(transition.daylightTimeOffset) * 1000;
    return QDateTime::fromMSecsSinceEpoch(dt.toMSecsSinceEpoch() + offset);
}

DSTSafe& DSTSafe::setTime(const QTime& time)
{
    m_time = time;
    return *this;
}

DSTSafe& DSTSafe::setDate(const QDate& date)
{
    m_date = date;
    return *this;
}

QDateTime DSTSafe::toQDateTime() const
{
    return check(QDateTime(m_date, m_time, Qt::LocalTime));
}

QDateTime DSTSafe::toUTCQDateTime() const
{
    return QDateTime(m_date, m_time, Qt::UTC);
}

QDateTime& shrinkSeconds(QDateTime& dt)
{
    dt.setTime(QTime(dt.time().hour(), dt.time().minute()));
    return dt;
}

QDateTime dateTimeBoot()
{
    while (const utmpx* record = ::getutxent()) {
        if (record->ut_type == BOOT_TIME)
            return QDateTime::fromSecsSinceEpoch(static_cast<quint32>(record->ut_tv.tv_sec));
    }
    return {};
}

} // namespace Orv::Utility

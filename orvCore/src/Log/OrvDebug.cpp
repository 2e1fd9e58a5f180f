#include <Orv/Log/OrvDebug.h>

#include "Log/ThreadNumber_p.h"

#include <QHash>
#include <QMutex>

#include <atomic>
#include <cstdio>

// The objects behind these functions are never destroyed, so that code which runs late in the process's exit can still
// log.

const QLoggingCategory& orvLogDebug()
{
    static const QLoggingCategory& category = *new QLoggingCategory("d.orv.log");
    return category;
}

const QLoggingCategory& orvLogInfo0()
{
    static const QLoggingCategory& category = *new QLoggingCategory("0.orv.log");
    return category;
}

const QLoggingCategory& orvLogInfoH()
{
    static const QLoggingCategory& category = *new QLoggingCategory("1.orv.log");
    return category;
}

quint64 threadId()
{
    struct Numbers {
        QMutex mutex;
        QHash<quint64, quint64> bySystemNumber;
        std::atomic<quint64> last{0};
    };
    static Numbers& numbers = *new Numbers;

    const QMutexLocker lock(&numbers.mutex);
    quint64& number = numbers.bySystemNumber[systemThreadNumber()];
    if (number == 0)
        number = ++numbers.last;
    return number;
}

namespace Orv {

namespace {

QDebug withPrefix(QDebug stream, const char* name)
{
    stream.noquote();
    stream << "[" << name << "]"
           << "[" << threadId() << "]";
    return stream;
}

} // namespace

OrvDebug::OrvDebug(const char* name) : m_name(name)
{
}

QDebug OrvDebug::debug() const
{
    return withPrefix(QMessageLogger().debug(orvLogDebug), m_name);
}

QDebug OrvDebug::debugOnly() const
{
    QDebug stream = debug();
    stream.setVerbosity(QDebug::MinimumVerbosity);
    return stream;
}

QDebug OrvDebug::info() const
{
    return withPrefix(QMessageLogger().info(orvLogInfo0), m_name);
}

QDebug OrvDebug::infoH() const
{
    return withPrefix(QMessageLogger().info(orvLogInfoH), m_name);
}

QDebug OrvDebug::warning() const
{
    return withPrefix(QMessageLogger().warning(), m_name);
}

QDebug OrvDebug::critical() const
{
    return withPrefix(QMessageLogger().critical(), m_name);
}

QDebug OrvDebug::error() const
{
    return critical();
}

QTextStream& OrvDebug::output()
{
    static QTextStream stream(stdout, QIODevice::ReadOnly | QIODevice::WriteOnly);
    return stream;
}

OrvFullDebug::OrvFullDebug(const char* name, QString text)
    : m_name(name), m_text(std::move(text)), m_timer(std::make_unique<QElapsedTimer>())
{
    m_timer->start();
}

OrvFullDebug::~OrvFullDebug() = default;

} // namespace Orv

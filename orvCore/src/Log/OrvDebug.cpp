#include <Orv/Log/OrvDebug.h>

#include "Log/ThreadNumber_p.h"

#include <QHash>
#include <QIODevice>
#include <QVarLengthArray>

#include <array>
#include <charconv>
#include <cstdio>
#include <mutex>
#include <string_view>

#include <pthread.h>

// These objects are never destroyed, because static destructors may log.

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

namespace {

struct ThreadNumbers {
    std::mutex mutex; // the thread sanitizer does not understand QMutex
    QHash<quint64, quint64> bySystemNumber;
};

ThreadNumbers& threadNumbers()
{
    static ThreadNumbers& numbers = *new ThreadNumbers;
    return numbers;
}

thread_local quint64 ownThreadNumber = 0; // cached: every message needs it, written or not

quint64 findThreadNumber()
{
    // In a forked child, the mutex has to be free, and its thread has a new system number.
    [[maybe_unused]] static const int registered =
        ::pthread_atfork([] { threadNumbers().mutex.lock(); }, [] { threadNumbers().mutex.unlock(); },
            [] {
                threadNumbers().mutex.unlock();
                ownThreadNumber = 0;
            });
    const std::lock_guard lock(threadNumbers().mutex);
    quint64& number = threadNumbers().bySystemNumber[systemThreadNumber()];
    if (number == 0)
        number = static_cast<quint64>(threadNumbers().bySystemNumber.size());
    return number;
}

} // namespace

quint64 threadId()
{
    if (ownThreadNumber == 0)
        ownThreadNumber = findThreadNumber();
    return ownThreadNumber;
}

namespace Orv {

namespace {

QMessageLogger logger()
{
    return QMessageLogger(nullptr, 0, nullptr); // no origin, but, unlike QMessageLogger(), a category
}

/// Adds the prefix, unless the stream is disabled and would discard it. Numbers the thread in either case.
QDebug withPrefix(QDebug stream, const char* name, bool isOn = true)
{
    const quint64 thread = threadId();
    stream.noquote();
    if (isOn) {
        std::array<char, 20> digits;
        const auto digitsEnd = std::to_chars(digits.begin(), digits.end(), thread).ptr;
        QVarLengthArray<char, 128> prefix; // UTF-8
        const auto add = [&prefix](std::string_view text) { prefix.append(text.data(), int(text.size())); };
        add("[ ");
        add({name, qstrlen(name)});
        add(" ] [ ");
        add({digits.data(), size_t(digitsEnd - digits.data())});
        add(" ]");
        prefix.append('\0');
        stream << prefix.constData();
    }
    return stream;
}

} // namespace

OrvDebug::OrvDebug(const char* name) : m_name(name)
{
}

QDebug OrvDebug::debug() const
{
    return withPrefix(logger().debug(orvLogDebug), m_name, orvLogDebug().isDebugEnabled());
}

QDebug OrvDebug::debugOnly() const
{
    QDebug stream = debug();
    stream.setVerbosity(QDebug::MinimumVerbosity);
    return stream;
}

QDebug OrvDebug::info() const
{
    return withPrefix(logger().info(orvLogInfo0), m_name);
}

QDebug OrvDebug::infoH() const
{
    return withPrefix(logger().info(orvLogInfoH), m_name, orvLogInfoH().isInfoEnabled());
}

QDebug OrvDebug::warning() const
{
    return withPrefix(logger().warning(), m_name);
}

QDebug OrvDebug::critical() const
{
    return withPrefix(logger().critical(), m_name);
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

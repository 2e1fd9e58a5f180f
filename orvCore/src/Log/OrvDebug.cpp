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

namespace {

struct ThreadNumbers {
    std::mutex mutex; // not QMutex, whose work the thread sanitizer cannot see
    QHash<quint64, quint64> bySystemNumber;
};

ThreadNumbers& threadNumbers()
{
    static ThreadNumbers& numbers = *new ThreadNumbers;
    return numbers;
}

thread_local quint64 ownThreadNumber = 0; // asked for at every line, switched off or not

quint64 findThreadNumber()
{
    // A child process finds the mutex free, and its thread has a system number of its own.
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
    return QMessageLogger(nullptr, 0, nullptr); // without an origin, but, unlike QMessageLogger(), with a category
}

/// A stream that is off throws away what it is given. The prefix is spared then; the thread is numbered all the same.
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

#pragma once

#include <Orv/Export.h>

#include <QDebug>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QString>
#include <QTextStream>

#include <memory>

/// Debug messages, category "d.orv.log": enabled by `LogManager` at level `Debug`.
ORV_EXPORT const QLoggingCategory& orvLogDebug();
/// Ordinary information, category "0.orv.log": always enabled.
ORV_EXPORT const QLoggingCategory& orvLogInfo0();
/// Detailed information, category "1.orv.log": enabled at levels `InfoHigh` and `Debug`.
ORV_EXPORT const QLoggingCategory& orvLogInfoH();

/// Returns a small number for the calling thread: 1 for the first thread that uses `OrvDebug` or calls this function,
/// 2 for the next, and so on. A number stays assigned to the system's thread number for the lifetime of the process.
/// Thread-safe.
ORV_EXPORT quint64 threadId();

namespace Orv {

/// Starts log messages: `OrvDebug("Engine").warning() << "no" << thing;`
///
/// Every message begins with the component name and the thread number of `threadId()`, "[ Engine ] [ 3 ] ", and is
/// passed to Qt's message handler when the stream is destroyed. By default, the stream inserts spaces and does not
/// quote strings; the caller can change that on the stream. Messages of a disabled category are not written, but their
/// thread still gets a number.
class ORV_EXPORT OrvDebug {
public:
    /// `name` is not copied: it has to outlive the object.
    explicit OrvDebug(const char* name);

    /// Starts a debug message in the category `orvLogDebug()`.
    QDebug debug() const;
    /// Like `debug()`, with the stream's verbosity set to 0, the minimum.
    QDebug debugOnly() const;
    /// Starts an information message in the category `orvLogInfo0()`.
    QDebug info() const;
    /// Starts a detailed information message in the category `orvLogInfoH()`.
    QDebug infoH() const;
    /// Starts a warning in the default category.
    QDebug warning() const;
    /// Starts an error message in the default category.
    QDebug critical() const;
    /// Same as `critical()`.
    QDebug error() const;

    /// Returns the process-wide text stream on standard output, which bypasses the log. Not thread-safe.
    static QTextStream& output();

private:
    const char* m_name;
};

/// Times a scope, for a debugger only: the object on the stack shows which operation runs and since when. It logs
/// nothing and has no accessors.
class ORV_EXPORT OrvFullDebug {
public:
    /// `name`, the component, is not copied: it has to outlive the object. `text` describes the operation, for example
    /// its function signature.
    OrvFullDebug(const char* name, QString text);
    ~OrvFullDebug();
    OrvFullDebug(const OrvFullDebug&) = delete;
    OrvFullDebug& operator=(const OrvFullDebug&) = delete;

private:
    [[maybe_unused]] const char* m_name;
    QString m_text;
    std::unique_ptr<QElapsedTimer> m_timer;
};

} // namespace Orv

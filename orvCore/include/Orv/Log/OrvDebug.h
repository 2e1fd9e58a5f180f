#pragma once

#include <Orv/Export.h>

#include <QDebug>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QString>
#include <QTextStream>

#include <memory>

/// Debug lines, category "d.orv.log": switched on by `LogManager` at level `Debug`.
ORV_EXPORT const QLoggingCategory& orvLogDebug();
/// Ordinary information, category "0.orv.log": always on.
ORV_EXPORT const QLoggingCategory& orvLogInfo0();
/// Information in high detail, category "1.orv.log": switched on at levels `InfoHigh` and `Debug`.
ORV_EXPORT const QLoggingCategory& orvLogInfoH();

/// The small number of the calling thread: 1 for the first thread that asks, 2 for the next, and so on. Numbers stay
/// with the system's thread number for the life of the process. Thread-safe.
ORV_EXPORT quint64 threadId();

namespace Orv {

/// Opens log lines: `OrvDebug("Engine").warning() << "no" << thing;`
///
/// Every line begins with the component name and the small number of the thread, "[ Engine ] [ 3 ] ", and is handed
/// to Qt's message handler when the stream is destroyed. Blanks are put between insertions and strings are not quoted,
/// until the caller changes that on the stream. A line whose category is switched off is not written; its thread is
/// numbered all the same.
class ORV_EXPORT OrvDebug {
public:
    /// `name` is not copied: it has to live as long as the object.
    explicit OrvDebug(const char* name);

    /// A debug line, in the category of `orvLogDebug()`.
    QDebug debug() const;
    /// As `debug()`, with the stream's verbosity at 0, the least.
    QDebug debugOnly() const;
    /// Ordinary information, in the category of `orvLogInfo0()`.
    QDebug info() const;
    /// Information in high detail, in the category of `orvLogInfoH()`.
    QDebug infoH() const;
    /// A warning, in the default category, as `critical()` and `error()`.
    QDebug warning() const;
    /// An error.
    QDebug critical() const;
    /// The same severity as `critical()`.
    QDebug error() const;

    /// A text stream on the process's standard output, past the log. Shared by the process, not thread-safe.
    static QTextStream& output();

private:
    const char* m_name;
};

/// Measures its own lifetime. Writes nothing.
class ORV_EXPORT OrvFullDebug {
public:
    /// `name` is not copied: it has to live as long as the object.
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

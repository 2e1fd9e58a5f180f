#pragma once

#include <QLoggingCategory>
#include <QRegularExpression>
#include <QStringList>

/// Collects the messages logged during its lifetime, as "error: message", without the component and thread of the
/// library's messages.
class LoggedLines {
public:
    LoggedLines()
    {
        QLoggingCategory::setFilterRules(QString()); // enables all categories
        all().clear();
        qInstallMessageHandler(add);
    }
    ~LoggedLines() { qInstallMessageHandler(nullptr); }
    LoggedLines(const LoggedLines&) = delete;
    LoggedLines& operator=(const LoggedLines&) = delete;

    /// Returns the messages since the last call.
    QStringList take() { return std::exchange(all(), {}); }

private:
    static QStringList& all()
    {
        static QStringList lines;
        return lines;
    }

    static void add(QtMsgType type, const QMessageLogContext&, const QString& text)
    {
        static const char* const names[] = {"debug", "warning", "error", "fatal", "info"}; // in the order of QtMsgType
        static const QRegularExpression prefix(QStringLiteral("^\\[ ORV \\] \\[ \\d+ \\] "));
        all() += QStringLiteral("%1: %2").arg(QLatin1String(names[type]), QString(text).remove(prefix));
    }
};

inline std::ostream& operator<<(std::ostream& stream, const QString& text)
{
    return stream << text.toStdString();
}

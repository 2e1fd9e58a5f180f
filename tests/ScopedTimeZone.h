#pragma once

#include <QByteArray>

#include <ctime>

/// Makes a zone the machine's local one while it lives.
class ScopedTimeZone {
public:
    explicit ScopedTimeZone(const char* zone) : m_before(qgetenv("TZ")), m_wasSet(qEnvironmentVariableIsSet("TZ"))
    {
        qputenv("TZ", zone);
        ::tzset();
    }
    ~ScopedTimeZone()
    {
        if (m_wasSet)
            qputenv("TZ", m_before);
        else
            qunsetenv("TZ");
        ::tzset();
    }
    ScopedTimeZone(const ScopedTimeZone&) = delete;
    ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;

private:
    const QByteArray m_before;
    const bool m_wasSet;
};

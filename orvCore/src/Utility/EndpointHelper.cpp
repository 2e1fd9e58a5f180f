#include <Orv/Utility/EndpointHelper.h>

#include <optional>

namespace Orv::Utitlity {

namespace {

struct Scheme {
    QStringView prefix;
    bool useSsl;
};
constexpr Scheme Schemes[] = {{u"http://", false}, {u"https://", true}};

/// Removes the scheme from the front of `rest`. Returns its TLS flag, or `defaultFlag` without a scheme.
bool takeScheme(QStringView& rest, bool defaultFlag)
{
    for (const Scheme& scheme : Schemes) {
        if (rest.startsWith(scheme.prefix)) {
            rest = rest.mid(scheme.prefix.size());
            return scheme.useSsl;
        }
    }
    return defaultFlag;
}

/// Removes leading slashes and colons, the user, and the host from the front of `rest`. Returns the host.
QString takeHost(QStringView& rest)
{
    while (rest.startsWith(u'/') || rest.startsWith(u':'))
        rest = rest.mid(1);
    rest = rest.mid(rest.indexOf(u'@') + 1);
    const auto colon = rest.indexOf(u':'); // ends the host, even if it is in the path
    const auto slash = rest.indexOf(u'/');
    const auto size = colon > 0 ? colon : slash > 0 ? slash : rest.size();
    const QString host = rest.left(size).toString();
    rest = rest.mid(size);
    return host;
}

/// Removes the port from the front of `rest`. Returns it as ":number"; empty without a port, `nullopt` if it is not a
/// positive `int`.
std::optional<QString> takePort(QStringView& rest)
{
    if (!rest.startsWith(u':'))
        return QString();
    rest = rest.mid(1);
    const auto slash = rest.indexOf(u'/');
    const auto size = slash > 0 ? slash : rest.size();
    bool isNumber = false;
    const int port = rest.left(size).toString().toInt(&isNumber);
    if (!isNumber || port <= 0)
        return std::nullopt;
    rest = rest.mid(size);
    return QLatin1Char(':') + QString::number(port);
}

} // namespace

EndpointHelper::EndpointHelper(const QString& endpoint, bool useSsl)
{
    convert(endpoint, useSsl);
}

void EndpointHelper::convert(const QString& endpoint, bool useSsl)
{
    m_hasError = false;
    m_lastErrorMessage = QString();
    if (endpoint.isEmpty()) {
        m_useSsl = false;
        m_endpoint = QString();
        return;
    }

    QStringView rest = QStringView(endpoint).trimmed();
    m_useSsl = takeScheme(rest, useSsl);
    const QString host = takeHost(rest);
    const std::optional<QString> port = takePort(rest);
    if (!port) {
        setError(QStringLiteral("Can't parse endpoint"));
        m_endpoint = endpoint;
        return;
    }
    const QString normal = host + *port + rest.toString();
    m_endpoint = normal.isEmpty() ? normal : QLatin1String("//") + normal;
}

QString EndpointHelper::endpointWithScheme() const
{
    if (m_hasError)
        return m_endpoint;
    return (m_useSsl ? QLatin1String("https:") : QLatin1String("http:")) + m_endpoint;
}

QString EndpointHelper::toEndpoint(const QString& endpoint)
{
    return EndpointHelper(endpoint, true).endpoint();
}

QString EndpointHelper::toEndpointWithScheme(const QString& endpoint, bool useSsl)
{
    return EndpointHelper(endpoint, useSsl).endpointWithScheme();
}

QPair<QString, bool> EndpointHelper::toPair(const QString& endpoint)
{
    const EndpointHelper helper(endpoint, true);
    return {helper.endpoint(), helper.useSsl()};
}

void EndpointHelper::setError(const QString& message)
{
    m_hasError = true;
    m_lastErrorMessage = message;
}

} // namespace Orv::Utitlity

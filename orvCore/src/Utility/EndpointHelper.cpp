#include <Orv/Utility/EndpointHelper.h>

#include <array>

namespace Orv::Utitlity {

namespace {

struct Scheme {
    QLatin1String prefix;
    bool useSsl;
};
const std::array<Scheme, 2> SupportScheme = {{{QLatin1String("http://"), false}, {QLatin1String("https://"), true}}};

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
    m_useSsl = useSsl;
    for (const Scheme& scheme : SupportScheme) {
        if (rest.startsWith(scheme.prefix)) {
            rest = rest.mid(scheme.prefix.size());
            m_useSsl = scheme.useSsl;
            break;
        }
    }
    while (rest.startsWith(u'/') || rest.startsWith(u':'))
        rest = rest.mid(1);
    rest = rest.mid(rest.indexOf(u'@') + 1);

    // A colon ends the host, even one that stands in the path.
    const auto colon = rest.indexOf(u':');
    const auto slash = rest.indexOf(u'/');
    const auto hostSize = colon > 0 ? colon : slash > 0 ? slash : rest.size();
    QString normal = rest.left(hostSize).toString();
    rest = rest.mid(hostSize);

    if (rest.startsWith(u':')) {
        rest = rest.mid(1);
        const auto portEnd = rest.indexOf(u'/');
        const auto portSize = portEnd > 0 ? portEnd : rest.size();
        bool isNumber = false;
        const int port = rest.left(portSize).toString().toInt(&isNumber);
        if (!isNumber || port <= 0) {
            setError(QStringLiteral("Can't parse endpoint"));
            m_endpoint = endpoint;
            return;
        }
        normal += QLatin1Char(':') + QString::number(port);
        rest = rest.mid(portSize);
    }
    normal += rest;
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

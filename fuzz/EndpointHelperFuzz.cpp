#include "Fuzz.h"

#include <Orv/Utility/EndpointHelper.h>

#include <QRegularExpression>

using Orv::Utitlity::EndpointHelper;

namespace {

struct Normal {
    QString endpoint;
    bool useSsl = false;
    bool hasError = false;
};

/// What the header says, as two patterns.
Normal plainly(const QString& address, bool useSsl)
{
    static const QRegularExpression prefix(
        QStringLiteral("^(https?://)?[/:]*(?:[^@]*@)?"), QRegularExpression::DontCaptureOption);
    static const QRegularExpression withPort(
        QStringLiteral("^([^:]+):(/?[^/]*)(.*)$"), QRegularExpression::DotMatchesEverythingOption);
    if (address.isEmpty())
        return {};
    const QString text = address.trimmed();
    const bool isSecure = text.startsWith(QLatin1String("https://"));
    Normal normal{text.mid(prefix.match(text).capturedLength()), useSsl, false};
    if (isSecure || text.startsWith(QLatin1String("http://")))
        normal.useSsl = isSecure;

    const QRegularExpressionMatch match = withPort.match(normal.endpoint);
    if (match.hasMatch()) {
        const int port = match.captured(2).toInt();
        if (port <= 0)
            return {address, normal.useSsl, true};
        normal.endpoint = QStringLiteral("%1:%2%3").arg(match.captured(1), QString::number(port), match.captured(3));
    }
    if (!normal.endpoint.isEmpty())
        normal.endpoint.prepend(QLatin1String("//"));
    return normal;
}

/// A normal form is its own normal form, unless its host begins or its path goes on with what a prefix would be.
bool isStable(const QString& endpoint)
{
    static const QRegularExpression stable(
        QStringLiteral("^//[^/:@][^@]*$"), QRegularExpression::DotMatchesEverythingOption);
    return stable.match(endpoint).hasMatch();
}

} // namespace

/// The result is that of the plain version, and a normal form stays as it is.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const bool byDefault = input.ConsumeBool();
    const QString address = QString::fromUtf8(restOf(input));
    const EndpointHelper helper(address, byDefault);

    const Normal normal = plainly(address, byDefault);
    require(helper.hasError() == normal.hasError, "errors are those of the plain version");
    require(helper.endpoint() == normal.endpoint, "the normal form is that of the plain version");
    require(helper.useSsl() == normal.useSsl, "TLS is as in the plain version");
    require(helper.lastErrorMessage().isNull() != helper.hasError(), "an error has a message");
    if (helper.hasError() || !isStable(helper.endpoint()))
        return 0;
    const EndpointHelper again(helper.endpointWithScheme(), !byDefault);
    require(!again.hasError() && again.endpoint() == helper.endpoint(), "a normal form stays as it is");
    require(again.useSsl() == helper.useSsl(), "the scheme says whether to use TLS");
    return 0;
}

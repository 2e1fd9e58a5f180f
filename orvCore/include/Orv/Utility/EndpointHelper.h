#pragma once

#include <Orv/Export.h>

#include <QPair>
#include <QString>

namespace Orv::Utitlity {

/// Normalises the address of a service (a URL, a host with optional user, port and path, or an address that begins with
/// two slashes) to the form "//host:port/path" without a scheme, and a TLS flag.
///
/// - The schemes are "http://" and "https://", in lower case. Without one, the default flag applies.
/// - Slashes and colons before the host are removed, and so is everything up to the first "@".
/// - The port is a number from 1 to 2147483647, written in decimal without leading zeros. The path is unchanged.
/// - An empty address has an empty normal form and no TLS, regardless of the default. The normal form of white space is
///   empty too.
///
/// @warning Validate user input first. An IPv6 address in brackets is an error, because its colons are parsed as the
/// one before the port. An "@" in a path or a password ends the user part: "host/a@b" yields the host "b".
///
/// An invalid port is an error: `hasError()` returns true, and the address is kept unchanged. Does not throw or log.
class ORV_EXPORT EndpointHelper {
public:
    /// Normalises `endpoint`. `useSsl` is the TLS flag for an address without a scheme.
    EndpointHelper(const QString& endpoint, bool useSsl);

    /// Normalises another address, like the constructor.
    void convert(const QString& endpoint, bool useSsl);

    /// Returns the normal form; the original address after an error.
    QString endpoint() const { return m_endpoint; }
    /// Returns the normal form, preceded by "https:" or "http:"; the original address after an error.
    QString endpointWithScheme() const;
    /// Whether to use TLS.
    bool useSsl() const { return m_useSsl; }
    /// Sets the TLS flag, and with it the scheme of `endpointWithScheme()`.
    void setUseSsl(bool useSsl) { m_useSsl = useSsl; }
    /// Whether the last address was invalid.
    bool hasError() const { return m_hasError; }
    /// Returns "Can't parse endpoint" after an error, otherwise a null string.
    const QString& lastErrorMessage() const { return m_lastErrorMessage; }

    /// Returns `endpoint()` of an address.
    static QString toEndpoint(const QString& endpoint);
    /// Returns `endpointWithScheme()` of an address.
    static QString toEndpointWithScheme(const QString& endpoint, bool useSsl);
    /// Returns `endpoint()` and `useSsl()` of an address. TLS is the default.
    static QPair<QString, bool> toPair(const QString& endpoint);

private:
    void setError(const QString& message);

    bool m_useSsl = true;
    bool m_hasError = false;
    QString m_endpoint;
    QString m_lastErrorMessage;
};

} // namespace Orv::Utitlity

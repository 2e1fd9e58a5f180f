#pragma once

#include <Orv/Export.h>

#include <QPair>
#include <QString>

namespace Orv::Utitlity {

/// Turns the address of a service as a user or a configuration gives it (a URL, a host with or without user, port and
/// path, an address that begins with two slashes) into one normal form without the scheme, "//host:port/path", and a
/// flag for TLS.
///
/// - "http://" and "https://", in lower case, are the schemes; without one, the default flag holds.
/// - Slashes and colons before the host are dropped, and so is everything up to the first "@", wherever it stands.
/// - The port is any number from 1 to 2147483647, and is written anew; the path is kept as it is.
/// - An empty address has an empty normal form and, whatever the default, no TLS. One of blanks is empty, too.
///
/// @warning Check what users type before it comes here. An IPv6 address in brackets is an error, since its colons are
/// taken for that of the port. An "@" in a path or in a password ends what is taken for the user: "host/a@b" gives the
/// host "b".
///
/// An address whose port is no such number is an error: then `hasError()` is set, and the address stands as it was
/// given. Nothing is thrown or logged.
class ORV_EXPORT EndpointHelper {
public:
    /// `useSsl` is the flag for an address without a scheme.
    EndpointHelper(const QString& endpoint, bool useSsl);

    /// Takes another address, as the constructor does.
    void convert(const QString& endpoint, bool useSsl);

    /// The normal form; the address itself after an error.
    QString endpoint() const { return m_endpoint; }
    /// The normal form with "https:" or "http:" before it; the address itself after an error.
    QString endpointWithScheme() const;
    /// Whether to use TLS.
    bool useSsl() const { return m_useSsl; }
    /// Decides on the scheme of `endpointWithScheme()`.
    void setUseSsl(bool useSsl) { m_useSsl = useSsl; }
    /// Whether the last address could not be read.
    bool hasError() const { return m_hasError; }
    /// "Can't parse endpoint" after an error, else null.
    const QString& lastErrorMessage() const { return m_lastErrorMessage; }

    /// `endpoint()` of an address.
    static QString toEndpoint(const QString& endpoint);
    /// `endpointWithScheme()` of an address.
    static QString toEndpointWithScheme(const QString& endpoint, bool useSsl);
    /// `endpoint()` and `useSsl()` of an address, with TLS for one without a scheme.
    static QPair<QString, bool> toPair(const QString& endpoint);

private:
    void setError(const QString& message);

    bool m_useSsl = true;
    bool m_hasError = false;
    QString m_endpoint;
    QString m_lastErrorMessage;
};

} // namespace Orv::Utitlity

#pragma once

#include <Orv/Export.h>

#include <QByteArray>
#include <QSet>
#include <QSharedPointer>
#include <QString>

namespace Orv::Core {

/// Process-wide settings for the connection to the management web service and to cloud storage.
///
/// The library only stores them: the client modules that read them define their units and their meaning. Strings are
/// stored as given, without trimming or validation. Obtaining the shared instance is thread-safe; reading and writing
/// settings is not: write them during start-up.
///
/// The order of the virtual operations is part of the binary interface: add new ones at the end.
class ORV_EXPORT GlobalConfig {
public:
    /// The usual name of the cloud plug-in library, "libpaxCloud", to pass to `setLoadCloudPlugin`. The default of
    /// `cloudPluginName()` is empty.
    static const QString PaxCloudPluginName;

    /// Returns the process-wide instance, created with the defaults on the first call.
    static QSharedPointer<GlobalConfig> instancePtr();
    /// Returns the process-wide instance by reference.
    static GlobalConfig& instance();

    /// Returns a new instance with the defaults, independent of the process-wide one, for tests.
    static QSharedPointer<GlobalConfig> mockInstancePtr();

    /// Whether the management service is used. Default: false.
    virtual bool usePax() const = 0;
    /// Default: 5.
    virtual unsigned int retryCount() const = 0;
    /// Default: 500.
    virtual unsigned int specialRetryCount() const = 0;
    /// Always 60.
    virtual unsigned int timeout() const = 0;
    /// Default: 2000.
    virtual unsigned int retryTimeout() const = 0;
    /// Always 1000.
    virtual unsigned int specialRetryTimeout() const = 0;
    /// Default: false.
    virtual bool needLoadCloudPlugin() const = 0;
    /// Default: empty.
    virtual const QString& cloudPluginName() const = 0;
    /// The base URL of the management service. Default: "https://localhost/".
    virtual const QString& paxEndpoint() const = 0;
    /// Default: empty.
    virtual const QString& pluginPath() const = 0;

    /// Stored as given.
    virtual void setUsePax(bool use) = 0;
    /// 0 is stored as 1.
    virtual void setRetryCount(unsigned int count) = 0;
    /// 0 is stored as 1.
    virtual void setRetryTimeout(unsigned int timeout) = 0;
    ///@{
    /// Stored as given.
    virtual void setPaxEndpoint(const QString& endpoint) = 0;
    virtual void setPluginPath(const QString& path) = 0;
    ///@}
    /// Stores both values, the name even if `load` is false.
    virtual void setLoadCloudPlugin(bool load, const QString& name) = 0;
    /// Stored as given, including 0.
    virtual void setSpecialRetryCount(unsigned int count) = 0;

    ///@{
    /// TLS settings, stored as given. Strings are empty by default.
    virtual void setSslCertificatePath(const QString& path) = 0;
    virtual const QString& sslCertificatePath() const = 0;
    virtual void setSslCertificateInfo(const QString& info) = 0;
    virtual const QString& sslCertificateInfo() const = 0;
    virtual void setSslTrustedCertificate(const QString& certificate) = 0;
    ///@}
    /// Returns the value of `setSslTrustedCertificate`. The misspelt name is kept for existing clients.
    virtual const QString& sslTrustedSertificate() const = 0;
    /// Stored as given.
    virtual void setSslEnableVerifyPeer(bool enable) = 0;
    /// Default: false.
    virtual bool sslEnableVerifyPeer() const = 0;
    /// Stored as given.
    virtual void setHasSslUpdateCache(bool has) = 0;
    /// Default: false.
    virtual bool hasSslUpdateCache() const = 0;
    /// Returns the cache itself; callers read and change it in place. Default: empty.
    virtual QSet<QByteArray>& sslCertificatesCache() = 0;

    /// Declared last to keep the vtable slots of the functions above.
    virtual ~GlobalConfig();
};

} // namespace Orv::Core

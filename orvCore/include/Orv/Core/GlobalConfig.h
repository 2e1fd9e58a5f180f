#pragma once

#include <Orv/Export.h>

#include <QByteArray>
#include <QSet>
#include <QSharedPointer>
#include <QString>

namespace Orv::Core {

/// Settings that a process shares for its talk with the management web service and with cloud storage.
///
/// The library only keeps them: their units and their meaning belong to the client modules that read them. Texts are
/// stored as given, without trimming or checks. Getting the shared instance is thread-safe; reading and writing the
/// settings is not, write them during start-up.
///
/// The order of the virtual operations is part of the binary interface: add new ones at the end.
class ORV_EXPORT GlobalConfig {
public:
    /// The default name of the cloud plug-in library, "libpaxCloud". Not the default of `cloudPluginName()`, which is
    /// empty: pass it to `setLoadCloudPlugin`.
    static const QString PaxCloudPluginName;

    /// The instance that the process shares, made with the defaults on the first call.
    static QSharedPointer<GlobalConfig> instancePtr();
    /// The same, by reference.
    static GlobalConfig& instance();

    /// A new instance with the defaults, independent of the shared one, to stand in for it.
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
    /// Stores both, the name also when `load` is false.
    virtual void setLoadCloudPlugin(bool load, const QString& name) = 0;
    /// Stores any value, also 0.
    virtual void setSpecialRetryCount(unsigned int count) = 0;

    ///@{
    /// Settings of TLS, stored as given. Texts are empty by default.
    virtual void setSslCertificatePath(const QString& path) = 0;
    virtual const QString& sslCertificatePath() const = 0;
    virtual void setSslCertificateInfo(const QString& info) = 0;
    virtual const QString& sslCertificateInfo() const = 0;
    virtual void setSslTrustedCertificate(const QString& certificate) = 0;
    ///@}
    /// What `setSslTrustedCertificate` stored. The spelling is kept: clients call it so.
    virtual const QString& sslTrustedSertificate() const = 0;
    /// Stored as given.
    virtual void setSslEnableVerifyPeer(bool enable) = 0;
    /// Default: false.
    virtual bool sslEnableVerifyPeer() const = 0;
    /// Stored as given.
    virtual void setHasSslUpdateCache(bool has) = 0;
    /// Default: false.
    virtual bool hasSslUpdateCache() const = 0;
    /// The cache itself, to be read and changed in place. Default: empty.
    virtual QSet<QByteArray>& sslCertificatesCache() = 0;

    /// Declared last, so that the slots of the operations above stay where they are.
    virtual ~GlobalConfig();
};

} // namespace Orv::Core

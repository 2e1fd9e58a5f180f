#include <Orv/Core/GlobalConfig.h>

#include <algorithm>

namespace Orv::Core {

const QString GlobalConfig::PaxCloudPluginName = QStringLiteral("libpaxCloud");

GlobalConfig::~GlobalConfig() = default;

/// Stores the settings.
class GlobalConfigImpl : public GlobalConfig {
public:
    bool usePax() const override { return m_usePax; }
    unsigned int retryCount() const override { return m_retryCount; }
    unsigned int specialRetryCount() const override { return m_specialRetryCount; }
    unsigned int timeout() const override { return 60; }
    unsigned int retryTimeout() const override { return m_retryTimeout; }
    unsigned int specialRetryTimeout() const override { return 1000; }
    bool needLoadCloudPlugin() const override { return m_loadCloudPlugin; }
    const QString& cloudPluginName() const override { return m_cloudPluginName; }
    const QString& paxEndpoint() const override { return m_paxEndpoint; }
    const QString& pluginPath() const override { return m_pluginPath; }

    void setUsePax(bool use) override { m_usePax = use; }
    void setRetryCount(unsigned int count) override { m_retryCount = std::max(count, 1u); }
    void setRetryTimeout(unsigned int timeout) override { m_retryTimeout = std::max(timeout, 1u); }
    void setPaxEndpoint(const QString& endpoint) override { m_paxEndpoint = endpoint; }
    void setPluginPath(const QString& path) override { m_pluginPath = path; }
    void setLoadCloudPlugin(bool load, const QString& name) override
    {
        m_loadCloudPlugin = load;
        m_cloudPluginName = name;
    }
    void setSpecialRetryCount(unsigned int count) override { m_specialRetryCount = count; }

    void setSslCertificatePath(const QString& path) override { m_sslCertificatePath = path; }
    const QString& sslCertificatePath() const override { return m_sslCertificatePath; }
    void setSslCertificateInfo(const QString& info) override { m_sslCertificateInfo = info; }
    const QString& sslCertificateInfo() const override { return m_sslCertificateInfo; }
    void setSslTrustedCertificate(const QString& certificate) override { m_sslTrustedCertificate = certificate; }
    const QString& sslTrustedSertificate() const override { return m_sslTrustedCertificate; }
    void setSslEnableVerifyPeer(bool enable) override { m_sslEnableVerifyPeer = enable; }
    bool sslEnableVerifyPeer() const override { return m_sslEnableVerifyPeer; }
    void setHasSslUpdateCache(bool has) override { m_hasSslUpdateCache = has; }
    bool hasSslUpdateCache() const override { return m_hasSslUpdateCache; }
    QSet<QByteArray>& sslCertificatesCache() override { return m_sslCertificatesCache; }

private:
    bool m_usePax = false;
    bool m_sslEnableVerifyPeer = false;
    bool m_hasSslUpdateCache = false;
    unsigned int m_retryCount = 5;
    unsigned int m_specialRetryCount = 500;
    QString m_paxEndpoint = QStringLiteral("https://localhost/");
    QString m_pluginPath;
    QString m_sslCertificatePath;
    QString m_sslCertificateInfo;
    QString m_sslTrustedCertificate;
    QSet<QByteArray> m_sslCertificatesCache;
    bool m_loadCloudPlugin = false;
    QString m_cloudPluginName;
    unsigned int m_retryTimeout = 2000;
};

QSharedPointer<GlobalConfig> GlobalConfig::instancePtr()
{
    static const QSharedPointer<GlobalConfig> instance = mockInstancePtr();
    return instance;
}

GlobalConfig& GlobalConfig::instance()
{
    return *instancePtr();
}

QSharedPointer<GlobalConfig> GlobalConfig::mockInstancePtr()
{
    return QSharedPointer<GlobalConfigImpl>::create();
}

} // namespace Orv::Core

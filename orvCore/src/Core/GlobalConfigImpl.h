#pragma once

#include <Orv/Core/GlobalConfig.h>

namespace Orv::Core {

/// Keeps the settings.
class GlobalConfigImpl : public GlobalConfig {
public:
    bool usePax() const override;
    unsigned int retryCount() const override;
    unsigned int specialRetryCount() const override;
    unsigned int timeout() const override;
    unsigned int retryTimeout() const override;
    unsigned int specialRetryTimeout() const override;
    bool needLoadCloudPlugin() const override;
    const QString& cloudPluginName() const override;
    const QString& paxEndpoint() const override;
    const QString& pluginPath() const override;
    void setUsePax(bool use) override;
    void setRetryCount(unsigned int count) override;
    void setRetryTimeout(unsigned int timeout) override;
    void setPaxEndpoint(const QString& endpoint) override;
    void setPluginPath(const QString& path) override;
    void setLoadCloudPlugin(bool load, const QString& name) override;
    void setSpecialRetryCount(unsigned int count) override;
    void setSslCertificatePath(const QString& path) override;
    const QString& sslCertificatePath() const override;
    void setSslCertificateInfo(const QString& info) override;
    const QString& sslCertificateInfo() const override;
    void setSslTrustedCertificate(const QString& certificate) override;
    const QString& sslTrustedSertificate() const override;
    void setSslEnableVerifyPeer(bool enable) override;
    bool sslEnableVerifyPeer() const override;
    void setHasSslUpdateCache(bool has) override;
    bool hasSslUpdateCache() const override;
    QSet<QByteArray>& sslCertificatesCache() override;

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
    unsigned int m_specialRetryTimeout = 1000;
};

} // namespace Orv::Core

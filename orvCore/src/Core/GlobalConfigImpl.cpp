#include "Core/GlobalConfigImpl.h"

#include <algorithm>

namespace Orv::Core {

bool GlobalConfigImpl::usePax() const
{
    return m_usePax;
}

unsigned int GlobalConfigImpl::retryCount() const
{
    return m_retryCount;
}

unsigned int GlobalConfigImpl::specialRetryCount() const
{
    return m_specialRetryCount;
}

unsigned int GlobalConfigImpl::timeout() const
{
    return 60;
}

unsigned int GlobalConfigImpl::retryTimeout() const
{
    return m_retryTimeout;
}

unsigned int GlobalConfigImpl::specialRetryTimeout() const
{
    return m_specialRetryTimeout;
}

bool GlobalConfigImpl::needLoadCloudPlugin() const
{
    return m_loadCloudPlugin;
}

const QString& GlobalConfigImpl::cloudPluginName() const
{
    return m_cloudPluginName;
}

const QString& GlobalConfigImpl::paxEndpoint() const
{
    return m_paxEndpoint;
}

const QString& GlobalConfigImpl::pluginPath() const
{
    return m_pluginPath;
}

void GlobalConfigImpl::setUsePax(bool use)
{
    m_usePax = use;
}

void GlobalConfigImpl::setRetryCount(unsigned int count)
{
    m_retryCount = std::max(count, 1u);
}

void GlobalConfigImpl::setRetryTimeout(unsigned int timeout)
{
    m_retryTimeout = std::max(timeout, 1u);
}

void GlobalConfigImpl::setPaxEndpoint(const QString& endpoint)
{
    m_paxEndpoint = endpoint;
}

void GlobalConfigImpl::setPluginPath(const QString& path)
{
    m_pluginPath = path;
}

void GlobalConfigImpl::setLoadCloudPlugin(bool load, const QString& name)
{
    m_loadCloudPlugin = load;
    m_cloudPluginName = name;
}

void GlobalConfigImpl::setSpecialRetryCount(unsigned int count)
{
    m_specialRetryCount = count;
}

void GlobalConfigImpl::setSslCertificatePath(const QString& path)
{
    m_sslCertificatePath = path;
}

const QString& GlobalConfigImpl::sslCertificatePath() const
{
    return m_sslCertificatePath;
}

void GlobalConfigImpl::setSslCertificateInfo(const QString& info)
{
    m_sslCertificateInfo = info;
}

const QString& GlobalConfigImpl::sslCertificateInfo() const
{
    return m_sslCertificateInfo;
}

void GlobalConfigImpl::setSslTrustedCertificate(const QString& certificate)
{
    m_sslTrustedCertificate = certificate;
}

const QString& GlobalConfigImpl::sslTrustedSertificate() const
{
    return m_sslTrustedCertificate;
}

void GlobalConfigImpl::setSslEnableVerifyPeer(bool enable)
{
    m_sslEnableVerifyPeer = enable;
}

bool GlobalConfigImpl::sslEnableVerifyPeer() const
{
    return m_sslEnableVerifyPeer;
}

void GlobalConfigImpl::setHasSslUpdateCache(bool has)
{
    m_hasSslUpdateCache = has;
}

bool GlobalConfigImpl::hasSslUpdateCache() const
{
    return m_hasSslUpdateCache;
}

QSet<QByteArray>& GlobalConfigImpl::sslCertificatesCache()
{
    return m_sslCertificatesCache;
}

} // namespace Orv::Core

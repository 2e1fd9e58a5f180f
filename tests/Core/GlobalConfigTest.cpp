#include <Orv/Core/GlobalConfig.h>

#include <QUrl>

#include <gtest/gtest.h>

using Orv::Core::GlobalConfig;

TEST(GlobalConfig, Defaults)
{
    const auto config = GlobalConfig::mockInstancePtr();
    EXPECT_FALSE(config->usePax());
    EXPECT_EQ(config->retryCount(), 5u);
    EXPECT_EQ(config->specialRetryCount(), 500u);
    EXPECT_EQ(config->timeout(), 60u);
    EXPECT_EQ(config->retryTimeout(), 2000u);
    EXPECT_EQ(config->specialRetryTimeout(), 1000u);
    EXPECT_FALSE(config->needLoadCloudPlugin());
    EXPECT_EQ(QUrl(config->paxEndpoint(), QUrl::StrictMode).scheme(), QStringLiteral("https"));
    EXPECT_FALSE(config->sslEnableVerifyPeer());
    EXPECT_FALSE(config->hasSslUpdateCache());
    EXPECT_TRUE(config->sslCertificatesCache().isEmpty());
    for (const QString& text : {config->cloudPluginName(), config->pluginPath(), config->sslCertificatePath(),
             config->sslCertificateInfo(), config->sslTrustedSertificate()})
        EXPECT_TRUE(text.isEmpty());
    EXPECT_EQ(GlobalConfig::PaxCloudPluginName, QStringLiteral("libpaxCloud"));
}

TEST(GlobalConfig, EachSetterReachesItsOwnGetter)
{
    const auto config = GlobalConfig::mockInstancePtr();
    config->setUsePax(true);
    config->setRetryCount(7);
    config->setRetryTimeout(8);
    config->setSpecialRetryCount(9);
    config->setPaxEndpoint(QStringLiteral(" endpoint "));
    config->setPluginPath(QStringLiteral("path"));
    config->setLoadCloudPlugin(true, QStringLiteral("plugin"));
    config->setSslCertificatePath(QStringLiteral("certificate path"));
    config->setSslCertificateInfo(QStringLiteral("info"));
    config->setSslTrustedCertificate(QStringLiteral("trusted"));
    EXPECT_TRUE(config->usePax());
    EXPECT_FALSE(config->sslEnableVerifyPeer());
    config->setSslEnableVerifyPeer(true);
    EXPECT_FALSE(config->hasSslUpdateCache());
    config->setHasSslUpdateCache(true);
    config->sslCertificatesCache().insert("certificate");

    EXPECT_TRUE(config->hasSslUpdateCache());
    EXPECT_EQ(config->retryCount(), 7u);
    EXPECT_EQ(config->retryTimeout(), 8u);
    EXPECT_EQ(config->specialRetryCount(), 9u);
    EXPECT_EQ(config->specialRetryTimeout(), 1000u);
    EXPECT_EQ(config->paxEndpoint(), QStringLiteral(" endpoint "));
    EXPECT_EQ(config->pluginPath(), QStringLiteral("path"));
    EXPECT_TRUE(config->needLoadCloudPlugin());
    EXPECT_EQ(config->cloudPluginName(), QStringLiteral("plugin"));
    EXPECT_EQ(config->sslCertificatePath(), QStringLiteral("certificate path"));
    EXPECT_EQ(config->sslCertificateInfo(), QStringLiteral("info"));
    EXPECT_EQ(config->sslTrustedSertificate(), QStringLiteral("trusted"));
    EXPECT_TRUE(config->sslCertificatesCache().contains("certificate"));
}

TEST(GlobalConfig, ZeroIsRaisedOnlyForRetries)
{
    const auto config = GlobalConfig::mockInstancePtr();
    config->setRetryCount(0);
    config->setRetryTimeout(0);
    config->setSpecialRetryCount(0);
    EXPECT_EQ(config->retryCount(), 1u);
    EXPECT_EQ(config->retryTimeout(), 1u);
    EXPECT_EQ(config->specialRetryCount(), 0u);
    config->setLoadCloudPlugin(false, QStringLiteral("kept"));
    EXPECT_FALSE(config->needLoadCloudPlugin());
    EXPECT_EQ(config->cloudPluginName(), QStringLiteral("kept"));
}

TEST(GlobalConfig, OneSharedInstanceAndIndependentMocks)
{
    EXPECT_EQ(GlobalConfig::instancePtr(), GlobalConfig::instancePtr());
    EXPECT_EQ(&GlobalConfig::instance(), GlobalConfig::instancePtr().data());
    const auto mock = GlobalConfig::mockInstancePtr();
    EXPECT_NE(mock, GlobalConfig::mockInstancePtr());
    mock->setRetryCount(77);
    EXPECT_EQ(GlobalConfig::instance().retryCount(), 5u);
}

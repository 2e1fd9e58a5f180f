#include <Orv/Core/GlobalConfig.h>

#include <QStringList>
#include <QUrl>

#include <functional>

using Orv::Core::GlobalConfig;

namespace {

/// All settings, in the order of the setters below.
QStringList settingsOf(GlobalConfig& c)
{
    const auto text = [](unsigned number) { return QString::number(number); };
    return {text(c.usePax()), text(c.retryCount()), text(c.retryTimeout()), text(c.specialRetryCount()),
        c.paxEndpoint(), c.pluginPath(), c.sslCertificatePath(), c.sslCertificateInfo(), c.sslTrustedSertificate(),
        text(c.sslEnableVerifyPeer()), text(c.hasSslUpdateCache()), c.sslCertificatesCache().values().value(0),
        text(c.needLoadCloudPlugin()), c.cloudPluginName(), text(c.timeout()), text(c.specialRetryTimeout())};
}

} // namespace

TEST(GlobalConfig, EachSetterChangesItsOwnSetting)
{
    struct Change {
        int setting;
        const char* value;
        std::function<void(GlobalConfig&)> set;
    };
    const Change changes[] = {{0, "1", [](auto& c) { c.setUsePax(true); }},
        {1, "7", [](auto& c) { c.setRetryCount(7); }}, {1, "1", [](auto& c) { c.setRetryCount(0); }},
        {2, "8", [](auto& c) { c.setRetryTimeout(8); }}, {2, "1", [](auto& c) { c.setRetryTimeout(0); }},
        {3, "9", [](auto& c) { c.setSpecialRetryCount(9); }}, {3, "0", [](auto& c) { c.setSpecialRetryCount(0); }},
        {4, " endpoint ", [](auto& c) { c.setPaxEndpoint(" endpoint "); }},
        {5, "path", [](auto& c) { c.setPluginPath("path"); }},
        {6, "certificate path", [](auto& c) { c.setSslCertificatePath("certificate path"); }},
        {7, "info", [](auto& c) { c.setSslCertificateInfo("info"); }},
        {8, "trusted", [](auto& c) { c.setSslTrustedCertificate("trusted"); }},
        {9, "1", [](auto& c) { c.setSslEnableVerifyPeer(true); }},
        {10, "1", [](auto& c) { c.setHasSslUpdateCache(true); }},
        {11, "certificate", [](auto& c) { c.sslCertificatesCache().insert("certificate"); }},
        {12, "1", [](auto& c) { c.setLoadCloudPlugin(true, ""); }},
        {13, "plugin", [](auto& c) { c.setLoadCloudPlugin(true, "plugin"); }},
        {12, "0", [](auto& c) { c.setLoadCloudPlugin(false, "plugin"); }},
        {13, "kept", [](auto& c) { c.setLoadCloudPlugin(false, "kept"); }}};
    const auto config = GlobalConfig::mockInstancePtr();
    EXPECT_EQ(QUrl(config->paxEndpoint(), QUrl::StrictMode).scheme(), "https");
    QStringList expected = {
        "0", "5", "2000", "500", config->paxEndpoint(), "", "", "", "", "0", "0", "", "0", "", "60", "1000"};
    EXPECT_EQ(settingsOf(*config), expected);
    for (const Change& change : changes) {
        change.set(*config);
        expected[change.setting] = change.value;
        EXPECT_EQ(settingsOf(*config), expected);
    }
    EXPECT_EQ(GlobalConfig::PaxCloudPluginName, "libpaxCloud");
}

TEST(GlobalConfig, OneSharedInstanceAndIndependentMocks)
{
    EXPECT_EQ(&GlobalConfig::instance(), GlobalConfig::instancePtr().data());
    GlobalConfig::mockInstancePtr()->setRetryCount(77);
    EXPECT_EQ(GlobalConfig::instance().retryCount(), 5u);
}

#include <Orv/Core/GlobalConfig.h>

#include "Core/GlobalConfigImpl.h"

namespace Orv::Core {

const QString GlobalConfig::PaxCloudPluginName = QStringLiteral("libpaxCloud");

GlobalConfig::~GlobalConfig() = default;

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

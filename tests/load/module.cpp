/// A module that loads the library with it.

#include <Orv/Log/LogManager.h>

extern "C" __attribute__((visibility("default"))) void setUpLog(const char* directory)
{
    Orv::LogManager& manager = Orv::LogManager::instance();
    manager.setLogPath(QString::fromUtf8(directory));
    manager.setOutToFile(true);
    manager.setCrashHandler(true);
    manager.init();
}

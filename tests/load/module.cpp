/// A module that brings the library with it when it is loaded.

#include <Orv/Log/LogManager.h>

extern "C" __attribute__((visibility("default"))) void setUpLog(const char* folder)
{
    Orv::LogManager& manager = Orv::LogManager::instance();
    manager.setLogPath(QString::fromUtf8(folder));
    manager.setOutToFile(true);
    manager.setCrashHandler(true);
    manager.init();
}

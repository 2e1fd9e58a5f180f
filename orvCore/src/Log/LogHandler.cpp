#include "Log/LogHandler.h"

#include <iostream>

LogHandler::~LogHandler() = default;

void LogHandler::handle(const el::LogDispatchData* data)
{
    if (data && data->logMessage())
        std::cout << data->logMessage()->message() << std::endl;
}

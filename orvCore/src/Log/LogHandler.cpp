#include "Log/LogHandler_p.h"

#include "Log/LogBackend_p.h"

LogHandler::~LogHandler() = default;

void LogHandler::handle(const el::LogDispatchData* data)
{
    if (data && data->logMessage())
        Orv::LogBackend::writeToStandardOutput(data->logMessage()->message() + '\n');
}

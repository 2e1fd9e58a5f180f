#include "Log/LogHandler.h"

#include <iostream>

LogHandler::~LogHandler() = default;

void LogHandler::handle(const el::LogDispatchData* data)
{
    if (!data || !data->logMessage())
        return;
    try {
        std::cout << data->logMessage()->message() << std::endl;
    } catch (const std::ios_base::failure&) {
        // Where the program has its streams throw, a broken output must not leave the back end locked.
    }
}

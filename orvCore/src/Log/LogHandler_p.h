#pragma once

#include <easylogging++.h>

/// Echoes the bare message of each entry to standard output.
class LogHandler : public el::LogDispatchCallback {
public:
    ~LogHandler() override;

protected:
    void handle(const el::LogDispatchData* data) override;
};

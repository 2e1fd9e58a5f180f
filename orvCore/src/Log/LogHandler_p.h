#pragma once

#include <easylogging++.h>

/// Echoes the bare text of each entry on standard output.
class LogHandler : public el::LogDispatchCallback {
public:
    ~LogHandler() override;

protected:
    void handle(const el::LogDispatchData* data) override;
};

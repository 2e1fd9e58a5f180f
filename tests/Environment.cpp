#include <QtGlobal>

#include <csignal>

namespace {

// What the developer's environment says about Qt's messages is no part of the tests; nor is which signals the parent
// process ignores.
const bool LoggingRulesUnset = qunsetenv("QT_LOGGING_RULES");
const bool FatalWarningsUnset = qunsetenv("QT_FATAL_WARNINGS");
const auto ParentsInterrupt = std::signal(SIGINT, SIG_DFL);

} // namespace

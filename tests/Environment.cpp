#include <QtGlobal>

#include <csignal>

namespace {

// Makes the tests independent of the environment's logging rules and of signals that the parent process ignores.
const bool LoggingRulesUnset = qunsetenv("QT_LOGGING_RULES");
const bool FatalWarningsUnset = qunsetenv("QT_FATAL_WARNINGS");
const auto ParentsInterrupt = std::signal(SIGINT, SIG_DFL);

} // namespace

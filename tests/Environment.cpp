#include <QtGlobal>

namespace {

// What the developer's environment says about Qt's messages is no part of the tests.
const bool LoggingRulesUnset = qunsetenv("QT_LOGGING_RULES");
const bool FatalWarningsUnset = qunsetenv("QT_FATAL_WARNINGS");

} // namespace

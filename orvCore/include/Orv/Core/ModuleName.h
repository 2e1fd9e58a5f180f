#pragma once

namespace Orv {

/// The component name in the library's own log entries.
inline constexpr char CORE_MODULE_NAME[] = "ORV";

} // namespace Orv

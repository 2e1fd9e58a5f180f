#pragma once

namespace Orv {

/// The component name under which the library's own records stand in the log.
inline constexpr char CORE_MODULE_NAME[] = "ORV";

} // namespace Orv

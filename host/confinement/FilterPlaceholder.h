// What the system-call filter has to leave open when the program is built.
#pragma once

#include <cstdint>

namespace ZEMA {

// Stands in the filter for the number of the process that it is put up in; no process has it.
inline constexpr std::uint32_t kOwnProcessPlaceholder = 0x7FFF5A45;

}  // namespace ZEMA

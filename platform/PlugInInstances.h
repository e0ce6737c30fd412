// For hosts and tests: how many plug-in instances of a factory are alive.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <optional>

namespace ZEMA {

#ifdef __APPLE__
// The real framework keeps its count to itself.
inline std::optional<CFIndex> PlugInInstanceCount(CFUUIDRef) {
    return std::nullopt;
}
#else
CF_EXPORT std::optional<CFIndex> PlugInInstanceCount(CFUUIDRef factory);
#endif

}  // namespace ZEMA

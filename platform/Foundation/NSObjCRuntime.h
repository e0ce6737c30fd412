// The basic types and marks that every Foundation header here uses.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>

// Classes and functions that other modules see: they live in the one shared library, and exceptions thrown there are
// caught elsewhere by type.
#define FOUNDATION_EXPORT __attribute__((visibility("default")))

namespace Foundation {

using NSInteger = long;
using NSTimeInterval = double;  // seconds

}  // namespace Foundation

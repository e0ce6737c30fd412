// Names against patterns with stars.
#pragma once

#include "core/String.h"

namespace ZEMA {

// Whether a name matches a pattern whose only wildcard is "*", ignoring case. Between stars the first occurrence is
// taken and never reconsidered, so the pattern "*a" does not match "aba".
bool MatchPattern(const String& name, const String& pattern);

}  // namespace ZEMA

// Paths as lists of components, and names against patterns.
#pragma once

#include "core/BasicArray.h"
#include "core/String.h"

namespace ZEMA {

// Splits at "/"; empty components are kept, and the empty path has none.
void SplitPath(const String& path, BasicArray<String>& components);

// Drops "." and resolves ".." against the component before it; a ".." with none before it stays.
void NormalizeComponents(BasicArray<String>& components);

bool IsSelfName(const String& component);    // "."
bool IsParentName(const String& component);  // ".."

// Whether a path of just this name leads to an element of this name. What an archive calls its members need not.
bool IsPlainName(const String& name);

// Whether a name matches a pattern whose only wildcard is "*", ignoring case. Between stars the first occurrence is
// taken and never reconsidered, so the pattern "*a" does not match "aba".
bool MatchPattern(const String& name, const String& pattern);

}  // namespace ZEMA

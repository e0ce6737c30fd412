// Paths as lists of components.
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

}  // namespace ZEMA

// What the file system keeps of a file beside its bytes, owner and permissions.
#pragma once

#include <string>

namespace ZEMA {

// Copies the extended attributes, access lists among them, of the file at `from` to an open one, as far as both file
// systems have them and let it. Before permissions are set, which some of them would change.
void CopyExtendedAttributes(const std::string& from, int to);

}  // namespace ZEMA

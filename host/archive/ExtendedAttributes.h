// What the file system keeps of a file beside its bytes, owner and permissions.
#pragma once

#include <sys/types.h>

#include <string>

namespace ZEMA {

// Gives an open file the extended attributes, access lists among them, of the file at `from`, and takes away an access
// list that it got from its folder. Before permissions are set, which some of them would change. False, after having
// done all that can be, where some could not be given; labels that the system gives to files by itself do not count.
bool CopyExtendedAttributes(const std::string& from, int to);

// The permissions that the user withholds from whatever is made.
mode_t CurrentUmask();

}  // namespace ZEMA

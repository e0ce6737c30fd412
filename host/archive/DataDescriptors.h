// Data descriptors, which are often 4 bytes longer than the storage tree takes them for.
#pragma once

#include "storage/zip/ZipStorageVolume.h"

namespace ZEMA {

// Writes the last member anew, if it has a descriptor, which it then has no more: what is added next would stand in the
// middle of a longer one. False when the member cannot be read.
[[nodiscard]] bool RewriteLastMember(ZipStorageVolume& volume);

// Counts the signature in front of a member's descriptor, if there is one, to the data, so that it goes with them and
// leaves no gap: some readers take an archive that begins with one for no archive. For a member that is going to be
// written back or removed, and has been loaded where it is needed.
void CountDescriptorSignature(const ZipStorageVolume& volume, ZipFileHeader& member);

}  // namespace ZEMA

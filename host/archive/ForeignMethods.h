// Contents that are packed by methods that the storage tree does not unpack.
#pragma once

#include <cstdint>
#include <string>

#include "host/archive/ArchiveRecords.h"
#include "host/archive/LocalRecord.h"
#include "host/archive/ScratchArchive.h"

namespace ZEMA {

// Whether only UnpackMember knows the method (APPNOTE 4.4.5): bzip2, LZMA, xz and PPMd.
bool IsForeignMethod(std::uint16_t method);

// Loads what unpacks them, for a process that can load nothing later on. Otherwise the first member does.
void LoadForeignMethods();

// What people call a method, or its number.
std::string NameOfMethod(std::uint16_t method);

// Reads the contents of a member of such a method, or one that is deflated or stored. The reader fails where they do
// not unpack to the size and checksum of the entry. The archive must outlive it.
ContentsReader UnpackMember(const ArchiveRecords& archive, const ArchiveEntry& entry, const LocalRecord& local);

}  // namespace ZEMA

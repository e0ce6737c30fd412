// Writing an archive anew from a plan, in one pass, and proving that it is what it should be.
#pragma once

#include <cstdint>
#include <vector>

#include "host/archive/ArchivePlan.h"
#include "host/system/Failure.h"

namespace ZEMA {

// Where the members of a plan will lie.
struct ArchiveLayout {
    std::uint64_t frontSize = 0;         // what stands in front of the members and is none
    std::vector<std::uint32_t> order;    // of the members in the file, as numbers in the plan
    std::vector<std::uint32_t> offsets;  // of the local headers, by the plan's numbers
};

// Finds out, before a byte is written, whether everything can be kept and the new archive stays within what an archive
// can hold. Fails with the member named.
Result<ArchiveLayout> LayOutArchive(const ArchivePlan& plan);

// Writes the archive into an empty file. The archives that it takes members from have not changed since.
Failure WriteArchive(const ArchivePlan& plan, const ArchiveLayout& layout, int to);

// Reads the written archive and compares it with the plan: all fields of all members, the packed bytes with those in
// the archive that they came from, the contents of new ones with their size and checksum.
Failure ProveArchive(const ArchivePlan& plan, const ArchiveLayout& layout, int written);

// Whether the storage tree mounts the archive and opens every member of it, whatever its contents are.
bool IsFineArchive(File& archive);

}  // namespace ZEMA

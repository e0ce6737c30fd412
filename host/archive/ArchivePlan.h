// What a new archive is to hold.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/archive/ArchiveRecords.h"
#include "host/archive/PackedData.h"

namespace ZEMA {

// What is different about a member of the new archive.
struct MemberChange {
    std::string name;                               // all of it, in bytes
    std::optional<PackedData> data = std::nullopt;  // in place of what the member had; a new folder has none
    std::int64_t modifiedSeconds = 0;               // of a new member, since 1970
    mode_t mode = 0;                                // of a new member
};

// One member of the new archive: one that there is, in the old archive or another one, or a new one.
struct PlannedMember {
    ArchiveRecords::Pointer source;  // whose entry it has; null for a new member
    std::uint32_t index = 0;         // of the entry
    std::unique_ptr<const MemberChange> change;
};

// What a new archive is to hold. A member that is not planned is removed.
struct ArchivePlan {
    ArchiveRecords::Pointer old;
    std::vector<PlannedMember> members;  // in the order of the new directory: the ones that stay, then new ones
    std::size_t keptCount = 0;           // how many stay
    int scratch = -1;                    // the file of packed data
    bool mending = false;                // what differs from the directory is wrong, and ZIP64 goes
    bool drop = false;                   // what belongs to no member goes, and the comment
};

}  // namespace ZEMA

// The two headers that a member gets in a new archive.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/archive/ArchivePlan.h"
#include "host/archive/ArchiveRecords.h"
#include "host/archive/LocalRecord.h"

namespace ZEMA {

// What both headers of a member say, but for its offset.
struct MemberHeaders {
    ArchiveEntry entry;  // name and comment are views of the plan's; the extra field stands below
    std::string extra;
    std::string localExtra;
    std::string encrypted;  // the fixed part of the local header where it stays as it was
};

// Of a planned member. Without the local record it had, what only the local header needs is missing.
MemberHeaders HeadersOf(const ArchivePlan& plan, const PlannedMember& member, const LocalRecord* local);

// The headers as bytes, with name and extra field.
std::string LocalHeaderOf(const MemberHeaders& headers);
std::string CentralHeaderOf(const MemberHeaders& headers, std::uint32_t offset);

// Whether a name holds bytes that are not ASCII, and is UTF-8: flag bit 11 then says so.
bool NeedsUtf8Flag(std::string_view name);

}  // namespace ZEMA

#include "host/archive/MemberHeaders.h"

#include <sys/stat.h>

#include <algorithm>
#include <ctime>
#include <limits>

#include "host/system/Utf8Text.h"
#include "storage/zip/ZipFormat.h"

namespace ZEMA {

namespace {

constexpr std::uint16_t kHostUnix = 3 << 8;
constexpr std::uint32_t kDosFolder = 0x10;

void Put16(std::string& bytes, std::uint64_t value) {
    char field[2];
    StoreU16(field, static_cast<std::uint16_t>(value));
    bytes.append(field, sizeof(field));
}

void Put32(std::string& bytes, std::uint64_t value) {
    char field[4];
    StoreU32(field, static_cast<std::uint32_t>(value));
    bytes.append(field, sizeof(field));
}

std::int64_t SecondsOf(int year, int month, int day, int hour, int minute, int second) {
    std::tm parts = {};
    parts.tm_year = year - 1900, parts.tm_mon = month - 1, parts.tm_mday = day;
    parts.tm_hour = hour, parts.tm_min = minute, parts.tm_sec = second;
    parts.tm_isdst = -1;
    return std::mktime(&parts);
}

// The date and time of MS-DOS: local, from 1980 to 2107, in steps of two seconds. `seconds` becomes what they can say.
void StoreDate(std::int64_t& seconds, ArchiveEntry& entry) {
    static const std::int64_t first = SecondsOf(1980, 1, 1, 0, 0, 0);
    static const std::int64_t last = SecondsOf(2107, 12, 31, 23, 59, 58);
    seconds = std::clamp(seconds, first, last);
    const std::time_t time = seconds;
    std::tm parts = {};
    localtime_r(&time, &parts);
    entry.date = static_cast<std::uint16_t>((parts.tm_year - 80) << 9 | (parts.tm_mon + 1) << 5 | parts.tm_mday);
    entry.time = static_cast<std::uint16_t>(parts.tm_hour << 11 | parts.tm_min << 5 | parts.tm_sec / 2);
}

MemberHeaders HeadersOfNew(const MemberChange& change) {
    MemberHeaders headers;
    ArchiveEntry& entry = headers.entry;
    entry.name = change.name;
    entry.versionMadeBy = kHostUnix | kWrittenVersion;
    entry.versionNeeded = kWrittenVersion;
    if (NeedsUtf8Flag(entry.name)) entry.flags = kFlagUtf8;
    entry.externalAttributes = (change.mode & 0777u) << 16;
    entry.externalAttributes |=
        entry.IsFolder() ? S_IFDIR << 16 | kDosFolder : static_cast<std::uint32_t>(S_IFREG) << 16;
    std::int64_t seconds = change.modifiedSeconds;
    StoreDate(seconds, entry);
    if (seconds <= std::numeric_limits<std::int32_t>::max()) {
        Put16(headers.extra, kExtraTimestamp);
        Put16(headers.extra, 5);
        headers.extra += '\1';  // the time of change alone
        Put32(headers.extra, static_cast<std::uint64_t>(seconds));
        headers.localExtra = headers.extra;
    }
    return headers;
}

void GiveData(const PackedData& data, ArchiveEntry& entry) {
    entry.method = data.method;
    entry.crc32 = data.crc32;
    entry.compressedSize = data.size;
    entry.uncompressedSize = data.unpackedSize;
    entry.flags = static_cast<std::uint16_t>(entry.flags & ~(kMethodFlags | kFlagDescriptor));
    entry.versionNeeded = kWrittenVersion;
}

}  // namespace

// The local header is written from the entry: nothing but its extra field is a word of its own. What decrypts a member
// depends on bit 3 and on the time in its local header, so that of an encrypted one both stay as they are.
MemberHeaders HeadersOf(const ArchivePlan& plan, const PlannedMember& member, const LocalRecord* local) {
    if (!member.source) {
        MemberHeaders headers = HeadersOfNew(*member.change);
        if (member.change->data) GiveData(*member.change->data, headers.entry);
        return headers;
    }
    MemberHeaders headers;
    ArchiveEntry& entry = headers.entry;
    entry = member.source->Entry(member.index);
    headers.extra = entry.extra;
    if (local != nullptr) headers.localExtra = local->Extra();
    if (entry.IsEncrypted()) {
        if (local != nullptr) headers.encrypted = local->bytes.substr(0, kLocalHeaderSize);
    } else {
        entry.flags = static_cast<std::uint16_t>(entry.flags & ~kFlagDescriptor);
        headers.localExtra = WithoutExtraPart(headers.localExtra, kExtraZip64);
    }
    if (plan.mending) {
        headers.extra = WithoutExtraPart(headers.extra, kExtraZip64);
        entry.disk = 0;
    }
    if (!member.change) return headers;
    if (member.change->name != entry.name) {
        headers.extra = WithoutExtraPart(headers.extra, kExtraUnicodePath);
        headers.localExtra = WithoutExtraPart(headers.localExtra, kExtraUnicodePath);
        if (NeedsUtf8Flag(member.change->name)) entry.flags |= kFlagUtf8;
    }
    entry.name = member.change->name;
    if (member.change->data) GiveData(*member.change->data, entry);
    return headers;
}

std::string LocalHeaderOf(const MemberHeaders& headers) {
    const ArchiveEntry& entry = headers.entry;
    std::string bytes = headers.encrypted;
    if (bytes.empty()) {
        Put32(bytes, kLocalHeaderSignature);
        for (const std::uint16_t field : {entry.versionNeeded, entry.flags, entry.method, entry.time, entry.date}) {
            Put16(bytes, field);
        }
        Put32(bytes, entry.crc32);
        Put32(bytes, entry.compressedSize);
        Put32(bytes, entry.uncompressedSize);
        bytes.resize(kLocalHeaderSize);
    } else {
        const std::uint16_t utf8 = entry.flags & kFlagUtf8;
        StoreU16(&bytes[kLocalFlags], LoadU16(&bytes[kLocalFlags]) | utf8);
    }
    StoreU16(&bytes[kLocalNameLength], static_cast<std::uint16_t>(entry.name.size()));
    StoreU16(&bytes[kLocalExtraLength], static_cast<std::uint16_t>(headers.localExtra.size()));
    bytes += entry.name;
    return bytes += headers.localExtra;
}

std::string CentralHeaderOf(const MemberHeaders& headers, std::uint32_t offset) {
    const ArchiveEntry& entry = headers.entry;
    std::string bytes;
    Put32(bytes, kCentralHeaderSignature);
    for (const std::uint16_t field :
         {entry.versionMadeBy, entry.versionNeeded, entry.flags, entry.method, entry.time, entry.date}) {
        Put16(bytes, field);
    }
    Put32(bytes, entry.crc32);
    Put32(bytes, entry.compressedSize);
    Put32(bytes, entry.uncompressedSize);
    Put16(bytes, entry.name.size());
    Put16(bytes, headers.extra.size());
    Put16(bytes, entry.comment.size());
    Put16(bytes, entry.disk);
    Put16(bytes, entry.internalAttributes);
    Put32(bytes, entry.externalAttributes);
    Put32(bytes, offset);
    bytes += entry.name;
    bytes += headers.extra;
    return bytes += entry.comment;
}

bool NeedsUtf8Flag(std::string_view name) {
    return std::any_of(name.begin(), name.end(), [](char byte) { return (byte & 0x80) != 0; }) && IsUtf8(name);
}

}  // namespace ZEMA

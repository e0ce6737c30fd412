#include "host/archive/ArchiveRecords.h"

#include <algorithm>
#include <ctime>
#include <numeric>
#include <utility>

#include "storage/zip/ZipFormat.h"
#include "storage/zip/ZipRecords.h"

namespace ZEMA {

namespace {

// ZIP64 (APPNOTE 4.3.14 to 4.3.15): a record of its own, and a locator of it right before the end record.
constexpr std::uint32_t kEnd64Signature = 0x06064B50;
constexpr std::uint32_t kLocatorSignature = 0x07064B50;
constexpr std::size_t kEnd64Size = 56;
constexpr std::size_t kLocatorSize = 20;

// Where an end record may be when its comment is as long as it can be. The storage tree searches a little less.
constexpr std::uint64_t kLongestTail = kEndRecordSize + 0xFFFF;
constexpr std::uint64_t kSearchedBytes = 65535;

constexpr std::size_t kCentralTime = 12;
constexpr std::size_t kCentralDate = 14;
constexpr std::size_t kCentralDisk = 34;
constexpr std::size_t kCentralInternalAttributes = 36;

constexpr const char* kZip64 = "it is a ZIP64 archive";
constexpr const char* kMisplaced = "its directory is not where its end record says";

std::uint64_t LoadU64(const char* bytes) {
    return LoadU32(bytes) | static_cast<std::uint64_t>(LoadU32(bytes + 4)) << 32;
}

Failure ReadFailure() {
    return {FailureKind::System, "it cannot be read"};
}

Failure Damaged(const char* text) {
    return {FailureKind::Damaged, text};
}

Failure Unsupported(const char* text) {
    return {FailureKind::Unsupported, text};
}

bool BeginsLikeAnArchive(File& file, std::uint64_t size) {
    char bytes[4];
    if (size < sizeof(bytes) || !ReadAt(file, 0, sizeof(bytes), bytes)) return false;
    const std::uint32_t signature = LoadU32(bytes);
    // The last two stand in front of archives that are, or could have been, split: "PK\7\8" and "PK00".
    return signature == kLocalHeaderSignature || signature == kCentralHeaderSignature ||
           signature == kEndRecordSignature || signature == kEnd64Signature || signature == 0x08074B50 ||
           signature == 0x30304B50;
}

}  // namespace

// What an end record says, with what its ZIP64 record says instead where there is one.
struct ArchiveRecords::EndRecord {
    std::uint64_t position = 0;
    std::uint64_t directoryEnd = 0;  // where the next record begins
    std::uint32_t thisDisk = 0;
    std::uint32_t directoryDisk = 0;
    std::uint64_t entriesOnDisk = 0;
    std::uint64_t entries = 0;
    std::uint64_t directorySize = 0;
    std::uint64_t directoryOffset = 0;
    bool isZip64 = false;

    EndRecord(const char* bytes, std::uint64_t where)
        : position(where),
          directoryEnd(where),
          thisDisk(LoadU16(bytes + kEndThisDisk)),
          directoryDisk(LoadU16(bytes + kEndDirectoryDisk)),
          entriesOnDisk(LoadU16(bytes + kEndEntriesOnDisk)),
          entries(LoadU16(bytes + kEndEntries)),
          directorySize(LoadU32(bytes + kEndDirectorySize)),
          directoryOffset(LoadU32(bytes + kEndDirectoryOffset)) {}

    bool LiesWithin() const {
        return isZip64 || (directorySize <= position && directoryOffset <= position - directorySize);
    }

    bool ReadZip64(File& file);
    Failure Check(bool mending, std::uint64_t fileSize) const;
};

bool EndsLikeZip64(std::string_view bytes) {
    return bytes.size() >= kLocatorSize && LoadU32(bytes.data() + bytes.size() - kLocatorSize) == kLocatorSignature;
}

// False when the file cannot be read. An archive that says ZIP64 and has no record of it stays as it is.
bool ArchiveRecords::EndRecord::ReadZip64(File& file) {
    isZip64 = directorySize == kMaxOffset || directoryOffset == kMaxOffset;
    if (position < kLocatorSize) return true;
    char locator[kLocatorSize];
    if (!ReadAt(file, position - kLocatorSize, kLocatorSize, locator)) return false;
    if (!EndsLikeZip64({locator, kLocatorSize})) return true;
    isZip64 = true;
    // Where something was put in front of the archive, the record is no more where the locator says.
    for (const std::uint64_t where : {LoadU64(locator + 8), position - kLocatorSize - kEnd64Size}) {
        char bytes[kEnd64Size];
        if (where > position || position - where < kLocatorSize + kEnd64Size) continue;
        if (!ReadAt(file, where, kEnd64Size, bytes)) return false;
        if (LoadU32(bytes) != kEnd64Signature) continue;
        directoryEnd = where;
        thisDisk = LoadU32(bytes + 16);
        directoryDisk = LoadU32(bytes + 20);
        entriesOnDisk = LoadU64(bytes + 24);
        entries = LoadU64(bytes + 32);
        directorySize = LoadU64(bytes + 40);
        directoryOffset = LoadU64(bytes + 48);
        break;
    }
    return true;
}

// What the record itself tells; the first thing that is wrong is the reason for the ones behind it.
Failure ArchiveRecords::EndRecord::Check(bool mending, std::uint64_t fileSize) const {
    if (isZip64 && !mending) return Unsupported(kZip64);
    if (thisDisk != 0 || directoryDisk != 0) return Unsupported("it is one part of an archive that was split");
    if (mending) {
        const bool fits = directorySize <= directoryEnd && directoryOffset <= directoryEnd - directorySize;
        return fits ? Failure() : Damaged(kMisplaced);
    }
    if (entriesOnDisk != entries) return Damaged("its end record counts its members in two ways that differ");
    if (fileSize - position > kSearchedBytes) return Damaged("its comment is longer than 65,513 bytes");
    if (directoryOffset + directorySize != position) return Damaged(kMisplaced);
    return {};
}

Result<ArchiveRecords::Pointer> ArchiveRecords::Read(RefPointer<File> file) {
    return ReadRecords(std::move(file), false);
}

Result<ArchiveRecords::Pointer> ArchiveRecords::ReadForMending(RefPointer<File> file) {
    return ReadRecords(std::move(file), true);
}

ArchiveRecords::Pointer ArchiveRecords::None() {
    const std::shared_ptr<ArchiveRecords> records(new ArchiveRecords);
    records->trailer_.assign(2, '\0');
    return records;
}

// The last signature of an end record counts, as it does for the storage tree. One that is not what it seems, in a
// comment or a member, is passed over only to find out what is wrong with the archive, or to repair it.
Result<ArchiveRecords::Pointer> ArchiveRecords::ReadRecords(RefPointer<File> file, bool mending) {
    const std::shared_ptr<ArchiveRecords> records(new ArchiveRecords);
    records->file_ = std::move(file);
    const std::uint64_t size = records->fileSize_ = GetSize(*records->file_);
    const std::uint64_t tailSize = std::min(size, kLongestTail);
    std::string tail(static_cast<std::size_t>(tailSize), '\0');
    if (!ReadAt(*records->file_, size - tailSize, tailSize, tail.data())) return ReadFailure();

    Failure failure;
    bool isMisplaced = false;
    std::size_t index = std::string::npos;
    while (index != 0 &&
           (index = tail.rfind("PK\5\6", index == std::string::npos ? index : index - 1)) != std::string::npos) {
        if (tail.size() - index < kEndRecordSize) continue;
        EndRecord record(tail.data() + index, size - tailSize + index);
        if (!record.ReadZip64(*records->file_)) return ReadFailure();
        if (!record.LiesWithin()) {
            isMisplaced = true;
            continue;
        }
        failure = record.Check(mending, size);
        if (!failure) failure = records->ReadDirectory(record, mending);
        if (failure && mending) continue;
        if (failure) return failure;
        records->trailer_ = tail.substr(index + kEndCommentLength);
        ZipEndRecord mounted;
        if (!mending && (!ReadEndRecord(*records->file_, mounted) || mounted.position != record.position)) {
            return Damaged("there is a second end record behind its own");
        }
        return Pointer(records);
    }
    if (failure) return failure;
    if (size == 0) return Failure{FailureKind::NoArchive, "it is empty"};
    if (!BeginsLikeAnArchive(*records->file_, size)) return Failure{FailureKind::NoArchive, "it is no archive"};
    return Damaged(isMisplaced ? kMisplaced : "it was cut short: its directory is missing");
}

Failure ArchiveRecords::ReadDirectory(const EndRecord& record, bool mending) {
    shift_ = record.directoryEnd - record.directorySize - record.directoryOffset;
    directoryOffset_ = record.directoryOffset + shift_;
    positions_.clear();
    if (record.directorySize > kMaxOffset) return Unsupported("its directory is larger than 4 GiB");
    directory_.resize(static_cast<std::size_t>(record.directorySize));
    if (!ReadAt(*file_, directoryOffset_, directory_.size(), directory_.data())) return ReadFailure();
    for (std::size_t position = 0; position < directory_.size();) {
        const char* const bytes = directory_.data() + position;
        const std::size_t left = directory_.size() - position;
        if (left >= 4 && LoadU32(bytes) == kEnd64Signature) return Unsupported(kZip64);
        if (left < kCentralHeaderSize || LoadU32(bytes) != kCentralHeaderSignature) {
            return Damaged("its directory holds something that is no entry");
        }
        const std::size_t entrySize = kCentralHeaderSize + LoadU16(bytes + kCentralNameLength) +
                                      LoadU16(bytes + kCentralExtraLength) + LoadU16(bytes + kCentralCommentLength);
        if (left < entrySize) return Damaged("the last entry of its directory is cut short");
        positions_.push_back(static_cast<std::uint32_t>(position));
        position += entrySize;
    }
    if (!mending && positions_.size() != record.entries) {
        return Damaged("its end record and its directory differ in the number of members");
    }
    return {};
}

ArchiveEntry ArchiveRecords::Entry(std::size_t index) const {
    const char* const bytes = directory_.data() + positions_[index];
    ArchiveEntry entry;
    entry.versionMadeBy = LoadU16(bytes + kCentralVersionMadeBy);
    entry.versionNeeded = LoadU16(bytes + kCentralVersionNeeded);
    entry.flags = LoadU16(bytes + kCentralFlags);
    entry.method = LoadU16(bytes + kCentralMethod);
    entry.time = LoadU16(bytes + kCentralTime);
    entry.date = LoadU16(bytes + kCentralDate);
    entry.crc32 = LoadU32(bytes + kCentralCrc32);
    entry.compressedSize = LoadU32(bytes + kCentralCompressedSize);
    entry.uncompressedSize = LoadU32(bytes + kCentralUncompressedSize);
    entry.disk = LoadU16(bytes + kCentralDisk);
    entry.internalAttributes = LoadU16(bytes + kCentralInternalAttributes);
    entry.externalAttributes = LoadU32(bytes + kCentralExternalAttributes);
    entry.localHeaderOffset = LoadU32(bytes + kCentralLocalHeaderOffset);
    entry.name = {bytes + kCentralHeaderSize, LoadU16(bytes + kCentralNameLength)};
    entry.extra = {entry.name.data() + entry.name.size(), LoadU16(bytes + kCentralExtraLength)};
    entry.comment = {entry.extra.data() + entry.extra.size(), LoadU16(bytes + kCentralCommentLength)};

    // Only those are in the ZIP64 part that the entry itself has no room for, in this order.
    std::string_view wide = FindExtraPart(entry.extra, kExtraZip64);
    for (std::uint64_t* field : {&entry.uncompressedSize, &entry.compressedSize, &entry.localHeaderOffset}) {
        if (*field != kMaxOffset || wide.size() < 8) continue;
        *field = LoadU64(wide.data());
        wide.remove_prefix(8);
    }
    entry.localHeaderOffset += shift_;
    return entry;
}

std::vector<std::uint32_t> ArchiveRecords::FileOrder() const {
    std::vector<std::pair<std::uint64_t, std::uint32_t>> members;
    members.reserve(Count());
    for (std::uint32_t index = 0; index < Count(); ++index) members.emplace_back(Entry(index).localHeaderOffset, index);
    std::sort(members.begin(), members.end());
    std::vector<std::uint32_t> order;
    order.reserve(Count());
    for (const auto& member : members) order.push_back(member.second);
    return order;
}

bool ArchiveEntry::IsEncrypted() const {
    return (flags & kFlagEncrypted) != 0;
}

mode_t ArchiveEntry::UnixMode() const {
    const int host = versionMadeBy >> 8;
    return host == 3 || host == 19 ? static_cast<mode_t>(externalAttributes >> 16) : 0;
}

std::optional<std::int64_t> ArchiveEntry::ModifiedSeconds() const {
    const std::string_view stamp = FindExtraPart(extra, kExtraTimestamp);
    if (stamp.size() >= 5 && (stamp[0] & 1) != 0) return static_cast<std::int32_t>(LoadU32(stamp.data() + 1));
    if (date == 0) return std::nullopt;
    std::tm parts = {};
    parts.tm_year = (date >> 9) + 80;
    parts.tm_mon = (date >> 5 & 15) - 1;
    parts.tm_mday = date & 31;
    parts.tm_hour = time >> 11;
    parts.tm_min = time >> 5 & 63;
    parts.tm_sec = (time & 31) * 2;
    parts.tm_isdst = -1;
    return std::mktime(&parts);
}

namespace {

// Cuts the first part off an extra field: its number, its size, its contents. False where there is none any more.
bool TakeExtraPart(std::string_view& extra, std::uint16_t& number, std::string_view& part) {
    if (extra.size() < 4) return false;
    const std::size_t size = LoadU16(extra.data() + 2);
    if (size > extra.size() - 4) return false;
    number = LoadU16(extra.data());
    part = extra.substr(0, 4 + size);
    extra.remove_prefix(part.size());
    return true;
}

}  // namespace

std::string WithoutExtraPart(std::string_view extra, std::uint16_t number) {
    std::string kept;
    std::uint16_t found = 0;
    for (std::string_view part; TakeExtraPart(extra, found, part);) {
        if (found != number) kept += part;
    }
    return kept += extra;
}

std::string_view FindExtraPart(std::string_view extra, std::uint16_t number) {
    std::uint16_t found = 0;
    for (std::string_view part; TakeExtraPart(extra, found, part);) {
        if (found == number) return part.substr(4);
    }
    return {};
}

}  // namespace ZEMA

// Reading members where they lie: the local header, and the bytes behind it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "host/archive/ArchiveRecords.h"
#include "storage/File.h"

namespace ZEMA {

inline constexpr std::size_t kLongestDescriptor = 24;  // what may stand behind the data

// What stands in front of a member's data, and behind them. Offsets are from the start of the file, sizes are bytes; a
// size that ZIP64 keeps in the extra field is the one from there.
struct LocalRecord {
    std::string bytes;  // the header with its name and extra field, as they are
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    std::uint32_t crc32 = 0;
    std::uint64_t compressedSize = 0;
    std::uint64_t uncompressedSize = 0;
    std::uint64_t dataOffset = 0;
    std::uint64_t dataSize = 0;        // as the directory has it, which is right
    std::uint32_t descriptorSize = 0;  // of the descriptor behind the data; 0 where none fits

    std::string_view Extra() const;
    bool HasDescriptor() const;  // by its own word; the directory's may be another
    bool LacksDescriptor() const { return HasDescriptor() && descriptorSize == 0; }
    std::uint64_t End() const { return dataOffset + dataSize + descriptorSize; }
};

// Bytes of files. Members are mostly looked at in the order in which they lie, and many are small: while one request
// follows closely on another, the system is asked once for what many of them want.
//
// Files:   none of them changes meanwhile, or goes.
// Threads: each has its own.
class FileWindow {
public:
    // The bytes, which are there until the next call; null where they cannot be read.
    const char* Find(File& file, std::uint64_t offset, std::uint64_t size);

private:
    bool Holds(const File& file, std::uint64_t offset, std::uint64_t size) const;
    bool Fill(File& file, std::uint64_t offset, std::uint64_t size);

    const File* file_ = nullptr;
    std::uint64_t offset_ = 0;
    std::uint64_t size_ = 0;
    std::uint64_t requested_ = 0;  // up to where
    std::string buffer_;
};

// Reads the local header. Fails, as Damaged, where there is none or the data leave the file.
Result<LocalRecord> ReadLocalRecord(FileWindow& window, const ArchiveRecords& archive, const ArchiveEntry& entry);

// The same for one member alone.
inline Result<LocalRecord> ReadLocalRecord(const ArchiveRecords& archive, const ArchiveEntry& entry) {
    FileWindow window;
    return ReadLocalRecord(window, archive, entry);
}

// Why a member cannot be written anew from its directory entry without a loss, if so: records that disagree, and forms
// of encryption and ZIP64 that the entry alone does not describe.
Failure CheckKept(const ArchiveEntry& entry, const LocalRecord& local);

// Why the storage tree does not open a member, if its headers are the reason.
Failure CheckReadable(const ArchiveEntry& entry, const LocalRecord& local);

// "'NAME' in it: " in front of the failure's text.
Failure OfMember(const ArchiveEntry& entry, const Failure& failure);

}  // namespace ZEMA

// What an archive file says of itself: its end record and its central directory, as they lie on disk.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/RefPointer.h"
#include "host/system/Failure.h"
#include "storage/File.h"

namespace ZEMA {

// One entry of the central directory, with every field that it has. Names and texts are bytes, in views that live as
// long as the records. Sizes are bytes; the offset is from the start of the file.
struct ArchiveEntry {
    std::uint16_t versionMadeBy = 0;  // the high byte names the host whose attributes these are
    std::uint16_t versionNeeded = 0;
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    std::uint16_t time = 0;  // as MS-DOS has them, in the writer's local time
    std::uint16_t date = 0;
    std::uint32_t crc32 = 0;
    std::uint64_t compressedSize = 0;
    std::uint64_t uncompressedSize = 0;
    std::uint32_t disk = 0;
    std::uint16_t internalAttributes = 0;
    std::uint32_t externalAttributes = 0;
    std::uint64_t localHeaderOffset = 0;
    std::string_view name;
    std::string_view extra;
    std::string_view comment;

    bool IsFolder() const { return name.ends_with('/'); }
    bool IsEncrypted() const;

    // File type and permissions, where a Unix system or OS X wrote the entry; 0 otherwise.
    mode_t UnixMode() const;

    // Seconds since 1970: the extended timestamp where there is one, else the MS-DOS date in the local time zone, where
    // the writer gave one.
    std::optional<std::int64_t> ModifiedSeconds() const;
};

// The records of one archive file, whatever its names are and whether or not it can be mounted. They take as much
// memory as the central directory.
//
// Ownership: shared by all who read members through it; keeps the file alive, which must not change meanwhile.
class ArchiveRecords {
public:
    using Pointer = std::shared_ptr<const ArchiveRecords>;

    // Fails, with one sentence that says why:
    //   NoArchive    nothing in the file looks like an archive
    //   Damaged      it is one, or looks like one: cut short, counts that differ, a directory that is not where it
    //                should be or does not fill its place
    //   Unsupported  the same: ZIP64, several disks
    //   System       the file cannot be read
    //
    // A file looks like an archive that begins with a signature of the format, or has an end record whose directory
    // lies within the file. No command replaces such a file by something else.
    static Result<Pointer> Read(RefPointer<File> file);

    // The same for the repair of archives, which also understands ZIP64, a directory that is as far behind its place
    // as all members are because something was put in front of the file, counts that are wrong, and a comment that is
    // too long to be searched. Entries then have their true sizes and offsets.
    static Result<Pointer> ReadForMending(RefPointer<File> file);

    // The records of no archive at all: no file, no members.
    static Pointer None();

    ArchiveRecords(const ArchiveRecords&) = delete;
    ArchiveRecords& operator=(const ArchiveRecords&) = delete;

    std::size_t Count() const { return positions_.size(); }
    ArchiveEntry Entry(std::size_t index) const;  // in the order of the directory

    // The entries by the places of their members in the file; those that claim the same place in directory order.
    std::vector<std::uint32_t> FileOrder() const;

    File& Archive() const { return *file_; }
    std::uint64_t FileSize() const { return fileSize_; }
    std::uint64_t DirectoryOffset() const { return directoryOffset_; }

    // What follows the end record's fixed part, with the length that it states in front.
    const std::string& Trailer() const { return trailer_; }

private:
    ArchiveRecords() = default;

    struct EndRecord;
    static Result<Pointer> ReadRecords(RefPointer<File> file, bool mending);
    Failure ReadDirectory(const EndRecord& record, bool mending);

    RefPointer<File> file_;
    std::uint64_t fileSize_ = 0;
    std::uint64_t directoryOffset_ = 0;
    std::uint64_t shift_ = 0;               // how much was put in front of the archive that its offsets do not know of
    std::string directory_;                 // its bytes
    std::vector<std::uint32_t> positions_;  // of the entries in them
    std::string trailer_;
};

// Whether an end record behind these bytes would be one of ZIP64 for their sake.
bool EndsLikeZip64(std::string_view bytes);

// The extra field without the parts of this number; what does not divide into parts stays as it is.
std::string WithoutExtraPart(std::string_view extra, std::uint16_t number);

// The contents of the first part of this number in an extra field; null data where there is none.
std::string_view FindExtraPart(std::string_view extra, std::uint16_t number);

// Flags that the storage tree does not know (APPNOTE 4.4.4).
inline constexpr std::uint16_t kFlagUtf8 = 0x0800;     // name and comment are UTF-8
inline constexpr std::uint16_t kMethodFlags = 0x0006;  // how the contents were packed; every method has its own

// Parts of extra fields.
inline constexpr std::uint16_t kExtraZip64 = 0x0001;        // APPNOTE 4.5.3
inline constexpr std::uint16_t kExtraTimestamp = 0x5455;    // "UT", of Info-ZIP: flags, then seconds since 1970
inline constexpr std::uint16_t kExtraUnicodePath = 0x7075;  // APPNOTE 4.6.9: the name once more, in UTF-8

}  // namespace ZEMA

#include "host/archive/LocalRecord.h"

#include <algorithm>
#include <cstring>

#include "host/archive/DescriptorFile.h"
#include "host/system/FileDescriptor.h"
#include "storage/zip/ZipFormat.h"
#include "storage/zip/ZipRecords.h"

namespace ZEMA {

namespace {

constexpr std::uint16_t kFlagStrongEncryption = 0x0040;  // APPNOTE 7.2: more records than these belong to the member
constexpr std::uint16_t kFlagMaskedHeader = 0x2000;      // the local header does not tell what the directory does
constexpr char kDescriptorSignature[] = {'P', 'K', 7, 8};

constexpr std::uint64_t kWideWindow = 1 << 18;
constexpr std::uint64_t kNarrowWindow = 1 << 12;  // as much as a header mostly needs
constexpr std::uint64_t kCloseBy = 1 << 16;

// Takes the sizes from the ZIP64 part of the extra field where the header has no room for them; it always has both.
void WidenSizes(LocalRecord& local) {
    const std::string_view wide = FindExtraPart(local.Extra(), kExtraZip64);
    if (wide.size() < 16) return;
    const auto load = [&wide](std::size_t at) {
        return LoadU32(wide.data() + at) | static_cast<std::uint64_t>(LoadU32(wide.data() + at + 4)) << 32;
    };
    if (local.uncompressedSize == kMaxOffset) local.uncompressedSize = load(0);
    if (local.compressedSize == kMaxOffset) local.compressedSize = load(8);
}

// A data descriptor has its sizes in 4 or 8 bytes each, and mostly a signature in front. Nothing tells which form was
// written but the values themselves.
std::uint32_t MatchDescriptor(const char* bytes, std::size_t available, const ArchiveEntry& entry) {
    for (const std::size_t width : {std::size_t{4}, std::size_t{8}}) {
        char expected[kLongestDescriptor] = {};
        std::memcpy(expected, kDescriptorSignature, 4);
        StoreU32(expected + 4, entry.crc32);
        for (std::size_t field = 0; field < 2; ++field) {
            const std::uint64_t size = field == 0 ? entry.compressedSize : entry.uncompressedSize;
            StoreU32(expected + 8 + field * width, static_cast<std::uint32_t>(size & kMaxOffset));
            if (width == 8) StoreU32(expected + 12 + field * width, static_cast<std::uint32_t>(size >> 32));
        }
        const std::size_t size = 8 + 2 * width;
        if (available >= size && std::memcmp(bytes, expected, size) == 0) return static_cast<std::uint32_t>(size);
        if (available >= size - 4 && std::memcmp(bytes, expected + 4, size - 4) == 0) {
            return static_cast<std::uint32_t>(size - 4);
        }
    }
    return 0;
}

}  // namespace

std::string_view LocalRecord::Extra() const {
    return std::string_view(bytes).substr(kLocalHeaderSize + LoadU16(bytes.data() + kLocalNameLength));
}

bool LocalRecord::HasDescriptor() const {
    return (flags & kFlagDescriptor) != 0;
}

bool FileWindow::Holds(const File& file, std::uint64_t offset, std::uint64_t size) const {
    return file_ == &file && offset >= offset_ && size <= size_ && offset - offset_ <= size_ - size;
}

// Operations on files of the storage tree take a lock that threads would wait for, and that no descriptor needs.
bool FileWindow::Fill(File& file, std::uint64_t offset, std::uint64_t size) {
    if (buffer_.size() < size) buffer_.resize(static_cast<std::size_t>(size));
    const auto* const native = dynamic_cast<const DescriptorFile*>(&file);
    const bool done = native == nullptr ? ReadAt(file, offset, size, buffer_.data())
                                        : ReadAllAt(native->Descriptor(), native->Start() + offset,
                                                    static_cast<std::size_t>(size), buffer_.data());
    file_ = done ? &file : nullptr;
    offset_ = offset;
    size_ = size;
    return done;
}

const char* FileWindow::Find(File& file, std::uint64_t offset, std::uint64_t size) {
    if (!Holds(file, offset, size)) {
        const bool follows = file_ == &file && offset >= requested_ && offset - requested_ < kCloseBy;
        const std::uint64_t fileSize = GetSize(file);
        if (offset > fileSize || size > fileSize - offset) return nullptr;
        const std::uint64_t wanted = std::max(size, follows ? kWideWindow : kNarrowWindow);
        if (!Fill(file, offset, std::min(wanted, fileSize - offset))) return nullptr;
    }
    requested_ = offset + size;
    return buffer_.data() + (offset - offset_);
}

Result<LocalRecord> ReadLocalRecord(FileWindow& window, const ArchiveRecords& archive, const ArchiveEntry& entry) {
    const Failure missing{FailureKind::Damaged, "its local header is missing"};
    const Failure leaves{FailureKind::Damaged, "its data reach behind the end of the archive"};
    const Failure unread{FailureKind::System, "it cannot be read"};
    const std::uint64_t fileSize = archive.FileSize();
    const std::uint64_t start = entry.localHeaderOffset;
    if (start > fileSize || fileSize - start < kLocalHeaderSize) return missing;

    LocalRecord local;
    ZipLocalHeader header;
    const char* bytes = window.Find(archive.Archive(), start, kLocalHeaderSize);
    if (bytes == nullptr) return unread;
    if (!ParseLocalHeader(bytes, header)) return missing;
    if (header.Size() > fileSize - start) return leaves;
    bytes = window.Find(archive.Archive(), start, header.Size());
    if (bytes == nullptr) return unread;
    local.bytes.assign(bytes, header.Size());
    local.flags = header.flags;
    local.method = header.method;
    local.crc32 = header.crc32;
    local.compressedSize = header.compressedSize;
    local.uncompressedSize = header.uncompressedSize;
    WidenSizes(local);
    local.dataOffset = start + header.Size();
    local.dataSize = entry.compressedSize;
    if (local.dataSize > fileSize - local.dataOffset) return leaves;

    if (local.HasDescriptor()) {
        const std::uint64_t behind = local.dataOffset + local.dataSize;
        const std::uint64_t available = std::min<std::uint64_t>(kLongestDescriptor, fileSize - behind);
        bytes = window.Find(archive.Archive(), behind, available);
        if (bytes == nullptr) return unread;
        local.descriptorSize = MatchDescriptor(bytes, static_cast<std::size_t>(available), entry);
    }
    return local;
}

Failure CheckKept(const ArchiveEntry& entry, const LocalRecord& local) {
    if ((entry.flags & (kFlagStrongEncryption | kFlagMaskedHeader)) != 0) {
        return {FailureKind::Unsupported, "it is encrypted in a way that ties it to its place"};
    }
    if (FindExtraPart(entry.extra, kExtraZip64).data() != nullptr) {
        return {FailureKind::Unsupported, "its directory entry is one of ZIP64"};
    }
    const bool sameSums = local.crc32 == entry.crc32 && local.compressedSize == entry.compressedSize &&
                          local.uncompressedSize == entry.uncompressedSize;
    if (local.method != entry.method || ((local.flags ^ entry.flags) & ~kFlagDescriptor) != 0 ||
        (!local.HasDescriptor() && !sameSums)) {
        return {FailureKind::Damaged, "its local header and the directory disagree"};
    }
    if (entry.IsEncrypted() && local.LacksDescriptor()) {
        return {FailureKind::Damaged, "its data descriptor and the directory disagree"};
    }
    return {};
}

// What the headers say as they are: a size that only ZIP64 knows is none to the storage tree.
Failure CheckReadable(const ArchiveEntry& entry, const LocalRecord& local) {
    ZipLocalHeader header;
    static_cast<void>(ParseLocalHeader(local.bytes.data(), header));
    if (entry.IsEncrypted()) return {FailureKind::Unsupported, "it is encrypted"};
    const Failure disagree{FailureKind::Damaged, "its local header and the directory disagree"};
    if (header.compressedSize != local.compressedSize || header.uncompressedSize != local.uncompressedSize) {
        return {FailureKind::Unsupported, "its local header is one of ZIP64"};
    }
    if (header.flags != entry.flags || header.method != entry.method) return disagree;
    if (local.HasDescriptor()) {
        const bool hasSums = header.crc32 != 0 || header.compressedSize != 0 || header.uncompressedSize != 0;
        return hasSums ? Failure{FailureKind::Damaged, "it has its sizes beside flag bit 3"} : Failure();
    }
    const bool sameSums = header.crc32 == entry.crc32 && header.compressedSize == entry.compressedSize &&
                          header.uncompressedSize == entry.uncompressedSize;
    return sameSums ? Failure() : disagree;
}

Failure OfMember(const ArchiveEntry& entry, const Failure& failure) {
    return failure.In("'" + std::string(entry.name) + "' in it");
}

}  // namespace ZEMA

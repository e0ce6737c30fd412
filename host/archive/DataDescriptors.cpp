#include "host/archive/DataDescriptors.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "host/archive/StorageReader.h"
#include "storage/zip/Crc32.h"
#include "storage/zip/ZipFormat.h"
#include "storage/zip/ZipRecords.h"
#include "storage/zip/ZipStorageFile.h"

namespace ZEMA {

namespace {

// PKWARE APPNOTE 4.3.9.3: not part of the descriptor at first, but written by most.
constexpr char kSignature[] = {'P', 'K', 7, 8};

// Reads the whole member and compares it with its checksum.
bool IsSound(File& file, std::uint32_t expected) {
    std::vector<char> buffer(kReadBufferSize);
    Crc32 crc;
    for (std::uint64_t left = GetSize(file); left > 0;) {
        const auto part = static_cast<std::size_t>(std::min<std::uint64_t>(left, buffer.size()));
        if (!Read(file, part, buffer.data())) return false;
        crc.Update(buffer.data(), part);
        left -= part;
    }
    return crc.Value() == expected;
}

// Has the same contents written once more.
bool Touch(File& file) {
    char first = 0;
    if (GetSize(file) == 0) return SetSize(file, 1) && SetSize(file, 0);
    return ReadAt(file, 0, 1, &first) && WriteAt(file, 0, 1, &first);
}

}  // namespace

bool RewriteLastMember(ZipStorageVolume& volume) {
    ZipFileHeader* const last = volume.MembersInFileOrder().Last();
    if (last == nullptr || !last->HasDescriptor()) return true;
    const ElementFlags flags = last->elementFlags;
    last->elementFlags = {ElementFlags::kReadable | ElementFlags::kWritable};  // a folder too is written as a file
    const RefPointer<ZipTreeNode> node = New<ZipTreeNode>(String(), last, nullptr);
    RefPointer<File> file(ZipStorageFile::Open(volume, *node, nullptr, kReadWriteStyle, nullptr));
    const bool sound = file && IsSound(*file, last->crc32) && Touch(*file);
    if (sound) CountDescriptorSignature(volume, *last);
    file.Reset();
    last->elementFlags = flags;
    return sound && !last->HasDescriptor();
}

void CountDescriptorSignature(const ZipStorageVolume& volume, ZipFileHeader& member) {
    char bytes[kLocalHeaderSize];
    ZipLocalHeader local;
    if (!member.HasDescriptor() || !ReadAt(volume.Archive(), member.localHeaderOffset, sizeof(bytes), bytes) ||
        !ParseLocalHeader(bytes, local)) {
        return;
    }
    const ZipFileHeader* const next = ZipStorageVolume::FileOrder::Next(&member);
    const std::uint64_t limit = next != nullptr ? next->localHeaderOffset : volume.EndRecord().directoryOffset;
    const std::uint64_t end = member.localHeaderOffset + local.Size() + member.DataAreaSize();
    if (limit < end + sizeof(kSignature)) return;
    if (!ReadAt(volume.Archive(), end - kDescriptorSize, sizeof(kSignature), bytes)) return;
    if (std::memcmp(bytes, kSignature, sizeof(kSignature)) == 0) member.compressedSize += sizeof(kSignature);
}

}  // namespace ZEMA

#include "storage/zip/ZipStorageVolume.h"

namespace ZEMA {

ZipStorageVolume::ZipStorageVolume(File* archive, AccessStyle style) : archive_(archive), style_(style) {}

ZipStorageVolume::~ZipStorageVolume() {
    while (ZipFileHeader* member = directoryOrder_.First()) Unlink(*member);
}

// Members without a node are held by nobody else.
void ZipStorageVolume::Link(ZipFileHeader& member) {
    member.AddRef();
    fileOrder_.PushBack(&member);
    directoryOrder_.PushBack(&member);
}

void ZipStorageVolume::Unlink(ZipFileHeader& member) {
    fileOrder_.Remove(&member);
    directoryOrder_.Remove(&member);
    member.Release();
}

bool ZipStorageVolume::ReadLocalHeader(const ZipFileHeader& member, ZipLocalHeader& header) const {
    char bytes[kLocalHeaderSize];
    return ReadAt(*archive_, member.localHeaderOffset, kLocalHeaderSize, bytes) && ParseLocalHeader(bytes, header);
}

bool ZipStorageVolume::LocateData(ZipFileHeader& member) {
    ZipLocalHeader header;
    if (!ReadLocalHeader(member, header)) return false;
    if (header.flags != member.flags || (header.flags & kFlagEncrypted) != 0) return false;
    if (header.method != member.method) return false;
    if (header.method != kMethodStored && header.method != kMethodDeflated) return false;
    // A writer that did not know the sizes left them 0 and put them behind the data.
    const bool unknown = member.HasDescriptor();
    if (header.crc32 != (unknown ? 0 : member.crc32)) return false;
    if (header.compressedSize != (unknown ? 0 : member.compressedSize)) return false;
    if (header.uncompressedSize != (unknown ? 0 : member.archivedSize)) return false;

    const std::uint64_t dataOffset = member.localHeaderOffset + header.Size();
    if (dataOffset > kMaxOffset) return false;
    member.dataOffset = static_cast<std::uint32_t>(dataOffset);
    return true;
}

}  // namespace ZEMA

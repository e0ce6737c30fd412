#include "storage/zip/ZipFileHeader.h"

#include "storage/zip/ZipFormat.h"
#include "storage/zip/ZipSegments.h"

namespace ZEMA {

ZipFileHeader::~ZipFileHeader() {
    DropSegments(*this, 0);
}

bool ZipFileHeader::HasDescriptor() const {
    return (flags & kFlagDescriptor) != 0;
}

std::uint64_t ZipFileHeader::DataAreaSize() const {
    return std::uint64_t{compressedSize} + (HasDescriptor() ? kDescriptorSize : 0);
}

void ZipFileHeader::ForgetContents() {
    DropSegments(*this, 0);
    uncompressedSize = archivedSize;
    dataOffset = 0;
}

}  // namespace ZEMA

#include "storage/zip/ZipDirectoryWindow.h"

#include <algorithm>

namespace ZEMA {

namespace {

constexpr std::uint64_t kWindowSize = 0x20000;

}  // namespace

const char* ZipDirectoryWindow::Read(std::uint64_t offset, std::uint32_t size) {
    if (offset > fileSize_ || size > fileSize_ - offset) return nullptr;
    if (offset < start_ || offset + size > start_ + bytes_.Length()) {
        // Behind the range there may be bytes that cannot be read and need not be.
        if (!Fill(offset, std::min(kWindowSize, fileSize_ - offset)) && !Fill(offset, size)) return nullptr;
    }
    return bytes_.Data() + (offset - start_);
}

bool ZipDirectoryWindow::Fill(std::uint64_t offset, std::uint64_t size) {
    start_ = offset;
    char* bytes = bytes_.ResizeForOverwrite(static_cast<std::uint32_t>(size));
    if (ReadAt(file_, offset, size, bytes)) return true;
    bytes_.Clear();
    return false;
}

}  // namespace ZEMA

#include "host/archive/DescriptorFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "host/system/FileDescriptor.h"

namespace ZEMA {

DescriptorFile::DescriptorFile(int descriptor, std::uint64_t start)
    : File(String(), nullptr), descriptor_(descriptor), start_(start) {
    struct stat status = {};
    if (!Note(fstat(descriptor, &status) == 0)) return;
    size_ = static_cast<std::uint64_t>(status.st_size) - std::min(static_cast<std::uint64_t>(status.st_size), start);
}

DescriptorFile::~DescriptorFile() = default;

// Of several errors the first one is the reason of the others.
bool DescriptorFile::Note(bool succeeded) {
    if (!succeeded && error_ == 0) error_ = errno;
    return succeeded;
}

bool DescriptorFile::ReadAt(std::uint64_t offset, std::uint64_t size, void* buffer, std::uint64_t* done) {
    if (done != nullptr) *done = 0;
    if (offset > size_) return false;
    const std::uint64_t count = std::min(size, size_ - offset);
    if (!Note(ReadAllAt(descriptor_, start_ + offset, static_cast<std::size_t>(count), buffer))) return false;
    position_ = offset + count;
    if (done != nullptr) *done = count;
    return count == size;
}

bool DescriptorFile::WriteAt(std::uint64_t offset, std::uint64_t size, const void* buffer, std::uint64_t* done) {
    if (done != nullptr) *done = 0;
    if (offset > size_ || size > INT64_MAX - start_ - offset) return false;
    if (!Note(WriteAllAt(descriptor_, start_ + offset, static_cast<std::size_t>(size), buffer))) return false;
    size_ = std::max(size_, offset + size);
    position_ = offset + size;
    if (done != nullptr) *done = size;
    return true;
}

bool DescriptorFile::SetSize(std::uint64_t size) {
    if (size > INT64_MAX - start_ || !Note(ftruncate(descriptor_, static_cast<off_t>(start_ + size)) == 0))
        return false;
    size_ = size;
    position_ = std::min(position_, size);
    return true;
}

bool DescriptorFile::Read(std::uint64_t size, void* buffer, std::uint64_t* done) {
    return ZEMA::ReadAt(*this, position_, size, buffer, done);
}

bool DescriptorFile::Write(std::uint64_t size, const void* buffer, std::uint64_t* done) {
    return ZEMA::WriteAt(*this, position_, size, buffer, done);
}

bool DescriptorFile::Seek(std::uint64_t position) {
    if (position > size_) return false;
    position_ = position;
    return true;
}

}  // namespace ZEMA

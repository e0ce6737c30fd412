#include "storage/File.h"

#include "storage/StorageMutex.h"

namespace ZEMA {

ElementFlags File::GetFlags() {
    return {ElementFlags::kReadable};
}

bool File::SetTimes(const ElementTimes*) {
    return false;
}

ElementTimes File::GetTimes() {
    return {};
}

std::uint64_t GetSize(File& file) {
    const StorageLock lock;
    return file.GetSize();
}

bool ReadAt(File& file, std::uint64_t offset, std::uint64_t size, void* buffer, std::uint64_t* done) {
    const StorageLock lock;
    return file.ReadAt(offset, size, buffer, done);
}

bool WriteAt(File& file, std::uint64_t offset, std::uint64_t size, const void* buffer, std::uint64_t* done) {
    const StorageLock lock;
    return file.WriteAt(offset, size, buffer, done);
}

bool Read(File& file, std::uint64_t size, void* buffer, std::uint64_t* done) {
    const StorageLock lock;
    return file.Read(size, buffer, done);
}

bool Write(File& file, std::uint64_t size, const void* buffer, std::uint64_t* done) {
    const StorageLock lock;
    return file.Write(size, buffer, done);
}

bool SetSize(File& file, std::uint64_t size) {
    const StorageLock lock;
    return file.SetSize(size);
}

std::uint64_t GetPosition(File& file) {
    const StorageLock lock;
    return file.GetPosition();
}

bool Seek(File& file, std::uint64_t position) {
    const StorageLock lock;
    return file.Seek(position);
}

}  // namespace ZEMA

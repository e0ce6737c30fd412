#include "storage/File.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>

#include "storage/StorageMutex.h"

namespace ZEMA {
namespace {

constexpr std::uint64_t kChunkSize = 0x20000;
constexpr std::uint64_t kReserveSize = 0x1000;  // in place of a chunk where there is no memory

// Two places in one file and the bytes that go from one to the other.
struct Move {
    File& file;
    std::uint64_t from;
    std::uint64_t to;

    bool Chunk(std::uint64_t offset, std::uint64_t size, unsigned char* buffer) const {
        return ReadAt(file, from + offset, size, buffer) && WriteAt(file, to + offset, size, buffer);
    }
};

}  // namespace

ElementFlags File::GetFlags() {
    return {ElementFlags::kReadable};
}

bool File::SetTimes(const ElementTimes*) {
    return false;
}

ElementTimes File::GetTimes() {
    return {};
}

bool File::SetAttributes(const ElementFlags* flags, const ElementTimes* times) {
    return SetTimes(times) && SetFlags(flags);
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

bool MoveRange(File& file, std::uint64_t from, std::uint64_t to, std::uint64_t length) {
    if (length > std::numeric_limits<std::uint64_t>::max() - std::max(from, to)) return false;
    const StorageLock lock;
    if (GetSize(file) < to + length && !SetSize(file, to + length)) return false;
    if (length == 0) return true;

    // Archives are edited by moves: one that ended for want of memory would leave them torn.
    unsigned char reserve[kReserveSize];
    std::uint64_t chunk = std::min(length, kChunkSize);
    const std::unique_ptr<unsigned char[]> block(new (std::nothrow) unsigned char[chunk]);
    unsigned char* const buffer = block ? block.get() : reserve;
    if (!block) chunk = std::min(length, kReserveSize);

    // Away from the end that the range grows over, so that no byte is overwritten before it was read.
    const Move move{file, from, to};
    if (from < to) {
        for (std::uint64_t left = length; left > 0;) {
            const std::uint64_t size = std::min(left, chunk);
            left -= size;
            if (!move.Chunk(left, size, buffer)) return false;
        }
        return true;
    }
    for (std::uint64_t offset = 0; offset < length;) {
        const std::uint64_t size = std::min(length - offset, chunk);
        if (!move.Chunk(offset, size, buffer)) return false;
        offset += size;
    }
    return true;
}

}  // namespace ZEMA

#include "host/archive/OverlayFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>

#include "host/system/FileDescriptor.h"

namespace ZEMA {

OverlayFile::OverlayFile(int original, int copy) : File(String(), nullptr), original_(original), copy_(copy) {
    struct stat status = {};
    if (Note(fstat(original, &status) == 0)) size_ = static_cast<std::uint64_t>(status.st_size);
    originalEnd_ = size_;
    if (copy_ >= 0) Note(ftruncate(copy_, static_cast<off_t>(size_)) == 0);
}

OverlayFile::~OverlayFile() = default;

bool OverlayFile::Note(bool succeeded) {
    if (!succeeded && error_ == 0) error_ = errno;
    return succeeded;
}

bool OverlayFile::ReadAt(std::uint64_t offset, std::uint64_t size, void* buffer, std::uint64_t* done) {
    if (done != nullptr) *done = 0;
    if (offset > size_) return false;
    const std::uint64_t end = offset + std::min(size, size_ - offset);
    auto* next = static_cast<char*>(buffer);
    for (std::uint64_t begin = offset; begin < end;) {
        std::uint64_t pieceEnd = end;
        if (!Note(ReadPiece(begin, end, next, pieceEnd))) return false;
        next += pieceEnd - begin;
        begin = pieceEnd;
    }
    position_ = end;
    if (done != nullptr) *done = end - offset;
    return end - offset == size;
}

// Reads up to `end`, or less far where the bytes come from several places.
bool OverlayFile::ReadPiece(std::uint64_t offset, std::uint64_t end, char* buffer, std::uint64_t& pieceEnd) const {
    const auto next = written_.upper_bound(offset);
    if (next != written_.begin() && std::prev(next)->second > offset) {
        pieceEnd = std::min(end, std::prev(next)->second);
        return ReadAllAt(copy_, offset, static_cast<std::size_t>(pieceEnd - offset), buffer);
    }
    pieceEnd = next == written_.end() ? end : std::min(end, next->first);
    if (offset < originalEnd_) {
        pieceEnd = std::min(pieceEnd, originalEnd_);
        return ReadAllAt(original_, offset, static_cast<std::size_t>(pieceEnd - offset), buffer);
    }
    std::memset(buffer, 0, static_cast<std::size_t>(pieceEnd - offset));
    return true;
}

bool OverlayFile::WriteAt(std::uint64_t offset, std::uint64_t size, const void* buffer, std::uint64_t* done) {
    if (done != nullptr) *done = 0;
    if (copy_ < 0 || offset > size_ || size > UINT64_MAX - offset) return false;
    if (!Note(WriteAllAt(copy_, offset, static_cast<std::size_t>(size), buffer))) return false;
    if (size != 0) AddWritten(offset, offset + size);
    size_ = std::max(size_, offset + size);
    position_ = offset + size;
    if (done != nullptr) *done = size;
    return true;
}

void OverlayFile::AddWritten(std::uint64_t begin, std::uint64_t end) {
    auto range = written_.upper_bound(begin);
    if (range != written_.begin() && std::prev(range)->second >= begin) --range;
    const bool extends = range != written_.end() && range->first <= begin;
    if (!extends) range = written_.emplace_hint(range, begin, end);
    range->second = std::max(range->second, end);
    for (auto next = std::next(range); next != written_.end() && next->first <= range->second;) {
        range->second = std::max(range->second, next->second);
        next = written_.erase(next);
    }
}

bool OverlayFile::SetSize(std::uint64_t size) {
    if (copy_ < 0 || size > INT64_MAX || !Note(ftruncate(copy_, static_cast<off_t>(size)) == 0)) return false;
    written_.erase(written_.lower_bound(size), written_.end());
    if (!written_.empty()) written_.rbegin()->second = std::min(written_.rbegin()->second, size);
    originalEnd_ = std::min(originalEnd_, size);
    position_ = std::min(position_, size);
    size_ = size;
    return true;
}

bool OverlayFile::Complete() {
    std::uint64_t copied = 0;
    for (const auto& [begin, end] : written_) {
        if (!Note(CopyGap(copied, begin))) return false;
        copied = end;
    }
    if (!Note(CopyGap(copied, size_))) return false;
    written_ = {{0, size_}};
    return true;
}

bool OverlayFile::CopyGap(std::uint64_t begin, std::uint64_t end) const {
    end = std::min(end, originalEnd_);
    return begin >= end || CopyRange(original_, copy_, begin, end - begin);
}

bool OverlayFile::Read(std::uint64_t size, void* buffer, std::uint64_t* done) {
    return ZEMA::ReadAt(*this, position_, size, buffer, done);
}

bool OverlayFile::Write(std::uint64_t size, const void* buffer, std::uint64_t* done) {
    return ZEMA::WriteAt(*this, position_, size, buffer, done);
}

bool OverlayFile::Seek(std::uint64_t position) {
    if (position > size_) return false;
    position_ = position;
    return true;
}

}  // namespace ZEMA

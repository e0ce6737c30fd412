#include "host/archive/StorageReader.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platform/Foundation/Uninterrupted.h"

namespace ZEMA {

Result<std::unique_ptr<StorageReader>> StorageReader::Open(const StorageItem& item) {
    if (item.facts.IsMissing()) return WhyMissing(item.facts);
    if (item.facts.IsFolder()) return Failure{FailureKind::WrongKind, "is a folder"};
    auto reader = std::make_unique<StorageReader>();
    if (!item.archive) {
        Result<FileDescriptor> file = OpenRegularFile(item.native);
        if (!file) return file.Why();
        reader->file_ = std::move(*file);
        return reader;
    }
    const Result<RefPointer<File>> member = OpenMemberFile(item.archive->Volume(), *item.node);
    if (!member) return member.Why();
    reader->archive_ = item.archive;
    reader->member_ = *member;
    reader->expected_ = item.node->Header()->crc32;
    reader->left_ = GetSize(**member);
    return reader;
}

Result<std::size_t> StorageReader::Read(void* buffer, std::size_t size) {
    return member_ ? ReadMember(buffer, size) : ReadNative(buffer, size);
}

Result<std::size_t> StorageReader::ReadNative(void* buffer, std::size_t size) {
    const ssize_t count = Foundation::Uninterrupted([&] { return read(file_.Get(), buffer, size); });
    if (count < 0) return SystemFailure(errno);
    return static_cast<std::size_t>(count);
}

// The checksum can only be told at the end, so that whoever copies must not keep what was read before a failure.
Result<std::size_t> StorageReader::ReadMember(void* buffer, std::size_t size) {
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(size, left_));
    if (!ZEMA::Read(*member_, count, buffer)) return Failure{FailureKind::Damaged, "it cannot be read"};
    crc_.Update(buffer, count);
    left_ -= count;
    if (count != 0 || crc_.Value() == expected_) return count;
    return Failure{FailureKind::Damaged, "it is damaged: its checksum is wrong"};
}

}  // namespace ZEMA

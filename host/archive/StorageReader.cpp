#include "host/archive/StorageReader.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace ZEMA {

std::unique_ptr<StorageReader> StorageReader::Open(const StorageItem& item, std::string& problem) {
    auto reader = std::make_unique<StorageReader>();
    if (item.facts.IsMissing()) {
        problem = WhyMissing(item.facts);
    } else if (item.facts.IsFolder()) {
        problem = "is a folder";
    } else if (!item.archive) {
        Result<FileDescriptor> file = OpenRegularFile(item.native);
        if (!file) {
            problem = file.Why().text;
            return nullptr;
        }
        reader->file_ = std::move(*file);
        return reader;
    } else {
        reader->archive_ = item.archive;
        reader->member_ = OpenMemberFile(item.archive->Volume(), *item.node, problem);
        reader->expected_ = item.node->Header()->crc32;
        if (reader->member_) reader->left_ = GetSize(*reader->member_);
        if (reader->member_) return reader;
    }
    return nullptr;
}

std::optional<std::size_t> StorageReader::Read(void* buffer, std::size_t size, std::string& problem) {
    return member_ ? ReadMember(buffer, size, problem) : ReadNative(buffer, size, problem);
}

std::optional<std::size_t> StorageReader::ReadNative(void* buffer, std::size_t size, std::string& problem) {
    while (true) {
        const ssize_t count = read(file_.Get(), buffer, size);
        if (count >= 0) return static_cast<std::size_t>(count);
        if (errno == EINTR) continue;
        problem = SystemFailure(errno).text;
        return std::nullopt;
    }
}

std::optional<std::size_t> StorageReader::ReadMember(void* buffer, std::size_t size, std::string& problem) {
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(size, left_));
    if (!ZEMA::Read(*member_, count, buffer)) {
        problem = "it cannot be read";
        return std::nullopt;
    }
    crc_.Update(buffer, count);
    left_ -= count;
    if (count != 0 || crc_.Value() == expected_) return count;
    problem = "it is damaged: its checksum is wrong";
    return std::nullopt;
}

}  // namespace ZEMA

#include "host/archive/ScratchArchive.h"

#include <cstring>
#include <utility>

#include "host/archive/DescriptorFile.h"
#include "host/archive/MarkedFile.h"
#include "storage/PathOperations.h"
#include "storage/zip/ZipFormat.h"

namespace ZEMA {

namespace {

constexpr std::uint32_t kMostMembers = 256;
constexpr std::uint64_t kLargeArchive = 1 << 30;  // far from what an archive can hold
constexpr std::uint64_t kInMemory = 1 << 22;
constexpr std::size_t kBufferSize = 1 << 18;

Failure OutOfMemory() {
    return {FailureKind::Limit, "there is not enough memory"};
}

}  // namespace

// The bytes of one scratch archive. They stay in memory while they are few: adding a small member takes a dozen writes.
class ScratchFile : public File {
public:
    ScratchFile(int descriptor, std::uint64_t start)
        : File(String(), nullptr), file_(New<DescriptorFile>(descriptor, start)) {}

    int Error() const { return file_->Error(); }

    // From here on all bytes are in the file.
    bool Spill() {
        if (isSpilled_) return true;
        isSpilled_ = ZEMA::WriteAt(*file_, 0, bytes_.size(), bytes_.data());
        if (isSpilled_) bytes_ = std::string();
        return isSpilled_;
    }

    bool ReadAt(std::uint64_t offset, std::uint64_t size, void* buffer, std::uint64_t* done) override {
        if (isSpilled_) return ZEMA::ReadAt(*file_, offset, size, buffer, done);
        if (done != nullptr) *done = 0;
        if (offset > bytes_.size() || size > bytes_.size() - offset) return false;
        std::memcpy(buffer, bytes_.data() + offset, static_cast<std::size_t>(size));
        if (done != nullptr) *done = size;
        return true;
    }

    bool WriteAt(std::uint64_t offset, std::uint64_t size, const void* buffer, std::uint64_t* done) override {
        if (offset + size > kInMemory && !Spill()) return false;
        if (isSpilled_) return ZEMA::WriteAt(*file_, offset, size, buffer, done);
        if (offset + size > bytes_.size()) bytes_.resize(static_cast<std::size_t>(offset + size));
        std::memcpy(bytes_.data() + offset, buffer, static_cast<std::size_t>(size));
        if (done != nullptr) *done = size;
        return true;
    }

    std::uint64_t GetSize() override { return isSpilled_ ? ZEMA::GetSize(*file_) : bytes_.size(); }

    bool SetSize(std::uint64_t size) override {
        if (size > kInMemory && !Spill()) return false;
        if (isSpilled_) return ZEMA::SetSize(*file_, size);
        bytes_.resize(static_cast<std::size_t>(size));
        return true;
    }

    // An archive is read and written at places only.
    bool Read(std::uint64_t, void*, std::uint64_t*) override { return false; }
    bool Write(std::uint64_t, const void*, std::uint64_t*) override { return false; }
    std::uint64_t GetPosition() override { return 0; }
    bool Seek(std::uint64_t) override { return false; }

protected:
    ~ScratchFile() override = default;

private:
    RefPointer<DescriptorFile> file_;
    std::string bytes_;
    bool isSpilled_ = false;
};

ScratchArchive::ScratchArchive(std::string path)
    : path_(std::move(path)), buffer_(std::make_unique_for_overwrite<char[]>(kBufferSize)) {}

// The tree lets go of the file before it is closed.
ScratchArchive::~ScratchArchive() {
    root_.Reset();
}

Failure ScratchArchive::Finish() {
    return !archive_ || archive_->Spill() ? Failure() : SystemFailure(archive_->Error());
}

Failure ScratchArchive::MakeRoom() {
    if (root_ && memberCount_ < kMostMembers && GetSize(*archive_) < kLargeArchive) return {};
    if (!file_.IsOpen()) {
        Result<FileDescriptor> file = MarkedFile::CreateNameless(path_);
        if (!file) return file.Why();
        file_ = std::move(*file);
    }
    if (Failure failure = Finish()) return failure;
    if (archive_) start_ += GetSize(*archive_);
    memberCount_ = 0;
    archive_ = New<ScratchFile>(file_.Get(), start_);
    const RefPointer<ZipStorageVolume> volume = New<ZipStorageVolume>(archive_.Get(), kReadWriteStyle);
    if (!volume->Open()) return WhyNot();
    root_ = New<ZipStorageDirectory>(String(), nullptr, volume.Get(), &volume->RootNode());
    return {};
}

Failure ScratchArchive::WhyNot() const {
    if (archive_->Error() != 0) return SystemFailure(archive_->Error());
    return OutOfMemory();
}

// Writes all that the reader gives.
Failure ScratchArchive::Fill(File& file, const ContentsReader& read, ContentsSums& sums) const {
    for (;;) {
        const Result<std::size_t> count = read(buffer_.get(), kBufferSize);
        if (!count) return count.Why();
        if (*count == 0) return {};
        sums.Add(buffer_.get(), *count);
        if (sums.Size() > kMaxOffset) return Refusal("it is too large for an archive");
        if (!Write(file, *count, buffer_.get())) return OutOfMemory();
    }
}

// The last release of the file packs the contents and cannot tell whether that went well: its member does.
Result<PackedData> ScratchArchive::Pack(const ContentsReader& read) {
    if (Failure failure = MakeRoom()) return failure;
    const std::uint64_t empty = 0;
    const String name(std::to_string(memberCount_++).c_str());
    RefPointer<File> file = OpenFile(*root_, name, &kReadWriteStyle, true, &empty);
    if (!file) return WhyNot();
    ContentsSums sums;
    if (Failure failure = Fill(*file, read, sums)) return failure;
    const ZipFileHeader& member = *root_->Node().FindChild(name)->Header();
    const std::uint64_t offset = start_ + member.dataOffset;
    file.Reset();
    if (member.archivedSize != sums.Size() || member.crc32 != sums.Crc32()) return WhyNot();
    return PackedData{offset, member.compressedSize, sums.Size(), sums.Crc32(), member.method};
}

}  // namespace ZEMA

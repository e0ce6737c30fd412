// Reads a written archive back and compares it with what it should be. Nothing is asked of the sources that wrote it:
// what they got wrong shows here.
#include <sys/stat.h>

#include <algorithm>
#include <future>

#include "host/archive/ArchivePass.h"
#include "host/archive/DescriptorFile.h"
#include "host/archive/LocalRecord.h"
#include "host/archive/MemberHeaders.h"
#include "host/system/FileDescriptor.h"
#include "storage/zip/ZipFormat.h"
#include "storage/zip/ZipStorageVolume.h"

namespace ZEMA {

namespace {

constexpr std::uint64_t kPieceSize = 1 << 18;

// Without the lock that operations on files of the storage tree take, where it is not needed.
bool ReadPiece(File& file, std::uint64_t offset, std::size_t size, void* buffer) {
    const auto* const native = dynamic_cast<const DescriptorFile*>(&file);
    return native == nullptr ? ReadAt(file, offset, size, buffer)
                             : ReadAllAt(native->Descriptor(), native->Start() + offset, size, buffer);
}

// Compares every other piece of two ranges, from the first or the second one on.
bool HasSamePieces(File& a, std::uint64_t offsetA, File& b, std::uint64_t offsetB, std::uint64_t size, bool second) {
    std::string bytesA, bytesB;
    for (std::uint64_t done = second ? kPieceSize : 0; done < size; done += 2 * kPieceSize) {
        bytesA.resize(static_cast<std::size_t>(std::min(kPieceSize, size - done)));
        bytesB.resize(bytesA.size());
        if (!ReadPiece(a, offsetA + done, bytesA.size(), bytesA.data())) return false;
        if (!ReadPiece(b, offsetB + done, bytesB.size(), bytesB.data())) return false;
        if (bytesA != bytesB) return false;
    }
    return true;
}

bool HasSameBytes(File& a, File& b, std::uint64_t size) {
    return HasSamePieces(a, 0, b, 0, size, false) && HasSamePieces(a, 0, b, 0, size, true);
}

// Whether `now` is `before` but for parts that went.
bool HasSameExtra(std::string_view now, std::string before, bool renamed, bool mending) {
    if (renamed) before = WithoutExtraPart(before, kExtraUnicodePath);
    if (mending) before = WithoutExtraPart(before, kExtraZip64);
    return now == before;
}

// The fields that a member keeps whatever happens to it, and the ones that its data give it.
bool HasSameFields(const ArchiveEntry& now, const ArchiveEntry& before, const PlannedMember& member, bool mending) {
    const bool renamed = member.change && member.change->name != before.name;
    const bool repacked = member.change && member.change->data;
    unsigned free = now.IsEncrypted() ? 0 : kFlagDescriptor;
    if (renamed) free |= kFlagUtf8;
    if (repacked) free |= kMethodFlags;
    const bool sameData = now.method == before.method && now.versionNeeded == before.versionNeeded;
    return now.name == (member.change ? std::string_view(member.change->name) : before.name) &&
           HasSameExtra(now.extra, std::string(before.extra), renamed, mending) && now.comment == before.comment &&
           ((now.flags ^ before.flags) & ~free) == 0 && (repacked || sameData) && now.crc32 == before.crc32 &&
           (repacked || now.compressedSize == before.compressedSize) &&
           now.uncompressedSize == before.uncompressedSize && now.versionMadeBy == before.versionMadeBy &&
           now.time == before.time && now.date == before.date && now.internalAttributes == before.internalAttributes &&
           now.externalAttributes == before.externalAttributes && (mending || now.disk == before.disk);
}

bool IsNewEntry(const ArchiveEntry& now, const MemberChange& change) {
    const mode_t mode = (now.IsFolder() ? S_IFDIR : S_IFREG) | (change.mode & 0777);
    return now.name == change.name && now.comment.empty() && now.UnixMode() == mode &&
           ((now.flags & kFlagUtf8) != 0) == NeedsUtf8Flag(change.name) && now.date != 0;
}

// Compares the members of one archive with its plan. Reading all bytes of two archives is most of the work: two threads
// share it.
class Proof {
public:
    Proof(const ArchivePlan& plan, ArchiveRecords::Pointer written) : plan_(plan), written_(std::move(written)) {}

    // The first member that is not what it should be, or how many there are.
    std::size_t FindWrong() const {
        auto other = std::async([this] { return FindWrong(1); });  // at once, or below where there are no threads
        const std::size_t first = FindWrong(0);
        return std::min(first, other.get());
    }

private:
    std::size_t FindWrong(std::size_t half) const {
        std::size_t number = 0;
        while (number < plan_.members.size() && Holds(number, half)) ++number;
        return number;
    }

    // Looks at one half of what is to be seen of a member: its headers and the first of its pieces, or the others.
    bool Holds(std::size_t number, std::size_t half) const {
        const PlannedMember& member = plan_.members[number];
        const ArchiveEntry now = written_->Entry(number);
        const bool isSecond = number % 2 != half;
        if (isSecond && now.compressedSize < kPieceSize - kLongestDescriptor) return true;
        const Result<LocalRecord> local = ReadLocalRecord(*written_, now);
        if (!local || (!isSecond && !HasRightHeaders(member, now, *local))) return false;
        if (member.change && member.change->data) return isSecond || HasNewData(*member.change->data, now, *local);
        return HasOldData(member, *local, isSecond);
    }

    bool HasRightHeaders(const PlannedMember& member, const ArchiveEntry& now, const LocalRecord& local) const {
        if (CheckKept(now, local) || NameIn(local) != now.name) return false;
        if (!now.IsEncrypted() && local.HasDescriptor()) return false;
        if (!member.source) return IsNewEntry(now, *member.change);
        return HasSameFields(now, member.source->Entry(member.index), member, plan_.mending);
    }

    static std::string_view NameIn(const LocalRecord& local) {
        return std::string_view(local.bytes).substr(kLocalHeaderSize, LoadU16(&local.bytes[kLocalNameLength]));
    }

    // What is encrypted has its descriptor compared too.
    bool HasOldData(const PlannedMember& member, const LocalRecord& now, bool isSecond) const {
        if (!member.source) return now.dataSize == 0;
        const Result<LocalRecord> before = ReadLocalRecord(*member.source, member.source->Entry(member.index));
        if (!before || before->dataSize != now.dataSize) return false;
        const std::uint64_t size = now.dataSize + now.descriptorSize;
        return HasSamePieces(written_->Archive(), now.dataOffset, member.source->Archive(), before->dataOffset, size,
                             isSecond);
    }

    bool HasNewData(const PackedData& data, const ArchiveEntry& now, const LocalRecord& local) const {
        return now.uncompressedSize == data.unpackedSize && now.crc32 == data.crc32 &&
               IsSound(written_->Archive(),
                       {local.dataOffset, local.dataSize, data.unpackedSize, data.crc32, now.method});
    }

    const ArchivePlan& plan_;
    const ArchiveRecords::Pointer written_;
};

}  // namespace

bool IsFineArchive(File& archive) {
    const RefPointer<ZipStorageVolume> volume = New<ZipStorageVolume>(&archive, kReadStyle);
    if (GetSize(archive) == 0 || !volume->Open()) return false;
    ZipFileHeader* member = volume->MembersInDirectoryOrder().First();
    while (member != nullptr && volume->LocateData(*member)) member = ZipStorageVolume::DirectoryOrder::Next(member);
    return member == nullptr;
}

Failure ProveArchive(const ArchivePlan& plan, const ArchiveLayout& layout, int written) {
    const Failure wrong{FailureKind::Damaged, "what was written is not what should be there"};
    const Result<ArchiveRecords::Pointer> records = ArchiveRecords::Read(New<DescriptorFile>(written));
    if (!records || (*records)->Count() != plan.members.size()) return wrong;
    if (!plan.drop && (*records)->Trailer() != plan.old->Trailer()) return wrong;
    if (layout.frontSize > 0 && !HasSameBytes((*records)->Archive(), plan.old->Archive(), layout.frontSize)) {
        return wrong;
    }
    if (plan.mending && !IsFineArchive((*records)->Archive())) return wrong;
    const std::size_t number = Proof(plan, *records).FindWrong();
    return number == plan.members.size() ? Failure() : OfMember((*records)->Entry(number), wrong);
}

}  // namespace ZEMA

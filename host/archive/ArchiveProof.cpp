// Reads a written archive back and compares it with what it should be. Nothing is asked of the sources that wrote it:
// what they got wrong shows here.
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
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
constexpr std::size_t kRunLength = 16;  // of members that one thread looks at before it leaves some to the other one
constexpr std::size_t kLocalTime = 10;
constexpr std::size_t kLocalDate = 12;

// One thread's view of the new archive and of those that its members came from.
struct Windows {
    FileWindow now;
    FileWindow before;
};

// Compares every other piece of two ranges, from the first or the second one on.
bool HasSamePieces(Windows& windows, File& now, std::uint64_t offsetNow, File& before, std::uint64_t offsetBefore,
                   std::uint64_t size, bool second) {
    for (std::uint64_t done = second ? kPieceSize : 0; done < size; done += 2 * kPieceSize) {
        const std::uint64_t part = std::min(kPieceSize, size - done);
        const char* const bytesNow = windows.now.Find(now, offsetNow + done, part);
        const char* const bytesBefore = windows.before.Find(before, offsetBefore + done, part);
        if (bytesNow == nullptr || bytesBefore == nullptr) return false;
        if (std::memcmp(bytesNow, bytesBefore, static_cast<std::size_t>(part)) != 0) return false;
    }
    return true;
}

bool HasSameFront(File& now, File& before, std::uint64_t size) {
    Windows windows;
    return HasSamePieces(windows, now, 0, before, 0, size, false) &&
           HasSamePieces(windows, now, 0, before, 0, size, true);
}

// Whether `now` is `before` but for parts that went.
bool HasSameExtra(std::string_view now, std::string_view before, bool renamed, bool without64) {
    std::string expected(before);
    if (renamed) expected = WithoutExtraPart(expected, kExtraUnicodePath);
    if (without64) expected = WithoutExtraPart(expected, kExtraZip64);
    return now == expected;
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
           HasSameExtra(now.extra, before.extra, renamed, mending) && now.comment == before.comment &&
           ((now.flags ^ before.flags) & ~free) == 0 && (repacked || sameData) && now.crc32 == before.crc32 &&
           (repacked || now.compressedSize == before.compressedSize) &&
           now.uncompressedSize == before.uncompressedSize && now.versionMadeBy == before.versionMadeBy &&
           now.time == before.time && now.date == before.date && now.internalAttributes == before.internalAttributes &&
           now.externalAttributes == before.externalAttributes && (mending || now.disk == before.disk);
}

// Whether the local header says what the entry does, and nothing else. That of an encrypted member is the old one but
// for the name.
bool HasSameLocalHeader(const ArchiveEntry& now, const LocalRecord& local, const LocalRecord* before) {
    const char* const bytes = local.bytes.data();
    const std::string_view name = std::string_view(local.bytes).substr(kLocalHeaderSize, now.name.size());
    if (LoadU16(bytes + kLocalNameLength) != now.name.size() || name != now.name || CheckKept(now, local)) return false;
    if (now.IsEncrypted()) {
        return before != nullptr && std::memcmp(bytes, before->bytes.data(), kLocalFlags) == 0 &&
               std::memcmp(bytes + kLocalMethod, &before->bytes[kLocalMethod], kLocalNameLength - kLocalMethod) == 0;
    }
    return LoadU16(bytes + kLocalVersionNeeded) == now.versionNeeded && LoadU16(bytes + kLocalTime) == now.time &&
           LoadU16(bytes + kLocalDate) == now.date && !local.HasDescriptor();
}

bool IsNewEntry(const ArchiveEntry& now, const LocalRecord& local, const MemberChange& change) {
    constexpr std::uint16_t kUnixVersion20 = 0x0314;
    const std::uint32_t mode = (now.IsFolder() ? S_IFDIR : S_IFREG) | (change.mode & 0777);
    return now.name == change.name && now.comment.empty() && now.versionMadeBy == kUnixVersion20 && now.date != 0 &&
           now.externalAttributes == (mode << 16 | (now.IsFolder() ? 0x10 : 0)) && now.internalAttributes == 0 &&
           now.disk == 0 && now.flags == (NeedsUtf8Flag(change.name) ? kFlagUtf8 : 0) && local.Extra() == now.extra &&
           HasSameLocalHeader(now, local, nullptr);
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
        Windows windows;
        std::size_t number = 0;
        while (number < plan_.members.size() && Holds(windows, number, half)) ++number;
        return number;
    }

    // Looks at one half of what is to be seen of a member: its headers and the first of its pieces, or the others.
    bool Holds(Windows& windows, std::size_t number, std::size_t half) const {
        const PlannedMember& member = plan_.members[number];
        const ArchiveEntry now = written_->Entry(number);
        const bool isSecond = number / kRunLength % 2 != half;
        if (isSecond && now.compressedSize < kPieceSize - kLongestDescriptor) return true;
        const Result<LocalRecord> local = ReadLocalRecord(windows.now, *written_, now);
        if (!local) return false;
        if (member.source) return HoldsOld(windows, member, now, *local, isSecond);
        if (isSecond) return true;
        const bool hasData =
            member.change->data ? HasNewData(windows.now, *member.change->data, now, *local) : local->dataSize == 0;
        return hasData && IsNewEntry(now, *local, *member.change);
    }

    // What is encrypted has its descriptor compared too.
    bool HoldsOld(Windows& windows, const PlannedMember& member, const ArchiveEntry& now, const LocalRecord& local,
                  bool isSecond) const {
        const ArchiveEntry entry = member.source->Entry(member.index);
        const Result<LocalRecord> before = ReadLocalRecord(windows.before, *member.source, entry);
        if (!before) return false;
        const bool renamed = now.name != entry.name;
        if (!isSecond &&
            !(HasSameFields(now, entry, member, plan_.mending) && HasSameLocalHeader(now, local, &*before) &&
              HasSameExtra(local.Extra(), before->Extra(), renamed, !now.IsEncrypted()))) {
            return false;
        }
        if (member.change && member.change->data)
            return isSecond || HasNewData(windows.now, *member.change->data, now, local);
        return before->dataSize == local.dataSize &&
               HasSamePieces(windows, written_->Archive(), local.dataOffset, member.source->Archive(),
                             before->dataOffset, local.dataSize + local.descriptorSize, isSecond);
    }

    bool HasNewData(FileWindow& window, const PackedData& data, const ArchiveEntry& now,
                    const LocalRecord& local) const {
        return now.uncompressedSize == data.unpackedSize && now.crc32 == data.crc32 &&
               IsSound(window, written_->Archive(),
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
    if (layout.frontSize > 0 && !HasSameFront((*records)->Archive(), plan.old->Archive(), layout.frontSize)) {
        return wrong;
    }
    if (plan.mending && !IsFineArchive((*records)->Archive())) return wrong;
    const std::size_t number = Proof(plan, *records).FindWrong();
    return number == plan.members.size() ? Failure() : OfMember((*records)->Entry(number), wrong);
}

}  // namespace ZEMA

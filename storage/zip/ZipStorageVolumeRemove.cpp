// Taking members out of an archive.
#include <algorithm>

#include "storage/zip/ZipStorageVolume.h"

namespace ZEMA {

// A range of the archive file that goes, in bytes from its start.
struct ZipStorageVolume::Cut {
    std::uint64_t begin;
    std::uint64_t end;

    std::uint32_t Size() const { return static_cast<std::uint32_t>(end - begin); }
    bool operator<(const Cut& other) const { return begin < other.begin; }
};

namespace {

// How much is cut away before a position; positions are asked for in ascending order.
template <class Cut>
class CutsBefore {
public:
    explicit CutsBefore(const BasicArray<Cut>& cuts) : cuts_(cuts) {}

    std::uint32_t operator()(std::uint64_t position) {
        for (; next_ < cuts_.Size() && cuts_[next_].begin < position; ++next_) removed_ += cuts_[next_].Size();
        return removed_;
    }

private:
    const BasicArray<Cut>& cuts_;
    std::size_t next_ = 0;
    std::uint32_t removed_ = 0;
};

template <class Cut>
std::uint32_t TotalSize(const BasicArray<Cut>& cuts) {
    std::uint32_t total = 0;
    for (const Cut& cut : cuts) total += cut.Size();
    return total;
}

}  // namespace

bool ZipStorageVolume::RemoveMembers(BasicArray<RefPointer<ZipFileHeader>>& members) {
    if (members.Empty()) return true;
    if (!CanEdit() || members.Size() > endRecord_.entryCount) return false;
    BasicArray<Cut> spans;
    BasicArray<Cut> entries;
    if (!FindCuts(members, spans, entries)) return false;
    const std::uint32_t spansSize = TotalSize(spans);
    const std::uint32_t entriesSize = TotalSize(entries);
    BasicArray<Cut> cuts = spans;  // all of them lie before the directory
    for (const Cut& entry : entries) cuts.PushBack(entry);

    damaged_ = true;  // and nothing takes memory any more
    for (const RefPointer<ZipFileHeader>& member : members) Unlink(*member);
    if (!MoveMembersDown(spans) || !CloseGaps(cuts)) return false;
    MoveEntriesDown(entries);
    endRecord_.directoryOffset -= spansSize;
    endRecord_.directorySize -= entriesSize;
    endRecord_.position -= spansSize + entriesSize;
    centralDirectoryEnd_ -= spansSize + entriesSize;
    endRecord_.entryCount = static_cast<std::uint16_t>(endRecord_.entryCount - members.Size());
    appendPosition_ = fileOrder_.First() == nullptr ? 0 : appendPosition_ - spansSize;
    if (!RewriteEndRecord(*archive_, endRecord_)) return false;
    damaged_ = false;
    return true;
}

// What the members take among the data and in the directory, both in ascending order.
bool ZipStorageVolume::FindCuts(const BasicArray<RefPointer<ZipFileHeader>>& members, BasicArray<Cut>& spans,
                                BasicArray<Cut>& entries) const {
    for (const RefPointer<ZipFileHeader>& member : members) {
        ZipLocalHeader local;
        if (!ReadLocalHeader(*member, local)) return false;
        const std::uint64_t spanEnd = member->localHeaderOffset + local.Size() + member->DataAreaSize();
        if (!LiesApart(*member, spanEnd)) return false;
        spans.PushBack({member->localHeaderOffset, spanEnd});

        char bytes[kCentralHeaderSize];
        ZipCentralHeader central;
        const std::uint64_t entry = CentralHeaderPosition(*member);
        if (!ReadAt(*archive_, entry, kCentralHeaderSize, bytes)) return false;
        if (!ParseCentralHeader(bytes, central)) return false;
        const std::uint64_t entryEnd = entry + central.EntrySize();
        const ZipFileHeader* next = DirectoryOrder::Next(member.Get());
        if (entryEnd > (next != nullptr ? CentralHeaderPosition(*next) : centralDirectoryEnd_)) return false;
        entries.PushBack({entry, entryEnd});
    }
    std::sort(spans.begin(), spans.end());
    std::sort(entries.begin(), entries.end());
    return true;
}

bool ZipStorageVolume::MoveMembersDown(const BasicArray<Cut>& spans) {
    CutsBefore removedBefore(spans);
    for (auto* member = fileOrder_.First(); member != nullptr; member = FileOrder::Next(member)) {
        const std::uint32_t distance = removedBefore(member->localHeaderOffset);
        if (distance == 0) continue;
        member->localHeaderOffset -= distance;
        if (member->dataOffset != 0) member->dataOffset -= distance;
    }
    return RewriteLocalHeaderOffsets(static_cast<std::uint32_t>(spans[0].begin));
}

// Moves what is kept down over the cuts, from front to back, and cuts the file.
bool ZipStorageVolume::CloseGaps(const BasicArray<Cut>& cuts) {
    const std::uint64_t fileEnd = GetSize(*archive_);
    std::uint64_t target = cuts[0].begin;
    for (std::size_t i = 0; i < cuts.Size(); ++i) {
        const std::uint64_t next = i + 1 < cuts.Size() ? cuts[i + 1].begin : fileEnd;
        const std::uint64_t length = next - cuts[i].end;
        if (!MoveRange(*archive_, cuts[i].end, target, length)) return false;
        target += length;
    }
    return SetSize(*archive_, target);
}

// Asked for while the directory still counts as standing where it stood.
void ZipStorageVolume::MoveEntriesDown(const BasicArray<Cut>& entries) {
    CutsBefore removedBefore(entries);
    for (auto* member = directoryOrder_.First(); member != nullptr; member = DirectoryOrder::Next(member)) {
        member->centralHeaderOffset -= removedBefore(CentralHeaderPosition(*member));
    }
}

}  // namespace ZEMA

// An archive of any bytes as its two readers see it: the volume that paths lead through, and the records that the
// commands believe. Where both take it, they agree.
#include <map>
#include <string>
#include <vector>

#include "fuzz/Fuzzing.h"
#include "host/archive/ForeignMethods.h"
#include "host/archive/LocalRecord.h"
#include "host/archive/MemberNames.h"
#include "host/archive/PackedData.h"
#include "storage/zip/ZipFormat.h"
#include "storage/zip/ZipStorageFile.h"

namespace ZEMA {

namespace {

using fuzzing::Require;

std::vector<ZipTreeNode*> NodesOf(const ZipStorageVolume& volume) {
    BasicArray<RefPointer<ZipTreeNode>> all;
    volume.RootNode().CollectSubtree(all);
    std::vector<ZipTreeNode*> nodes;
    for (const RefPointer<ZipTreeNode>& node : all) nodes.push_back(node.Get());
    return nodes;
}

std::vector<ZipFileHeader*> MembersOf(const ZipStorageVolume& volume) {
    std::vector<ZipFileHeader*> members;
    for (ZipFileHeader* member = volume.MembersInDirectoryOrder().First(); member != nullptr;
         member = ZipStorageVolume::DirectoryOrder::Next(member)) {
        members.push_back(member);
    }
    return members;
}

// Reads contents twice: whole, and piece by piece while another file is open on them.
void ExamineContents(ZipStorageVolume& volume, ZipTreeNode& node, const std::map<ZipFileHeader*, PackedData>& sound) {
    const RefPointer<File> file(ZipStorageFile::Open(volume, node, nullptr, kReadStyle, nullptr));
    const auto found = sound.find(node.Header());
    const bool directory = node.Flags().IsDirectory();
    Require(directory || file || found == sound.end(), "what is sound opens");
    if (!file) return;
    std::string whole(GetSize(*file), '\0'), pieces(whole.size(), '\0');
    const bool isRead = ReadAt(*file, 0, whole.size(), whole.data());
    const RefPointer<File> second(ZipStorageFile::Open(volume, node, nullptr, kReadStyle, nullptr));
    Require(bool(second), "what is open to others opens again");
    bool isReadAgain = true;
    for (std::size_t begin = 0; begin < pieces.size() && isReadAgain; begin += 1000) {
        const std::size_t size = std::min<std::size_t>(1000, pieces.size() - begin);
        isReadAgain = Read(*second, size, &pieces[begin]);
    }
    Require(isRead == isReadAgain && (!isRead || whole == pieces), "whole or in pieces, the contents are the same");
    if (found == sound.end()) return;
    ContentsSums sums;
    sums.Add(whole.data(), whole.size());
    Require(isRead && sums.Crc32() == found->second.crc32, "what is sound reads with its checksum");
}

// The members whose contents have their size and checksum, by the records alone.
PackedData ExamineEntry(const ArchiveRecords& records, const ArchiveEntry& entry, const Result<LocalRecord>& local) {
    static_cast<void>(entry.ModifiedSeconds());
    static_cast<void>(entry.UnixMode());
    Require(WithoutExtraPart(entry.extra, kExtraTimestamp).size() <= entry.extra.size(),
            "without a part it is shorter");
    if (!local) return {};
    static_cast<void>(CheckKept(entry, *local));
    Require(local->End() <= records.FileSize(), "data lie in the file");
    return {local->dataOffset, local->dataSize, entry.uncompressedSize, entry.crc32, entry.method};
}

void ExamineBoth(const ArchiveRecords::Pointer& records, ZipStorageVolume& volume) {
    const std::vector<ZipFileHeader*> members = MembersOf(volume);
    if (members.size() != records->Count()) return;  // a directory that ends early, which a volume does not mind
    std::map<ZipFileHeader*, PackedData> sound;
    FileWindow window;
    for (std::size_t i = 0; i < members.size(); ++i) {
        const ArchiveEntry entry = records->Entry(i);
        const Result<LocalRecord> local = ReadLocalRecord(window, *records, entry);
        const PackedData data = ExamineEntry(*records, entry, local);
        const bool located = volume.LocateData(*members[i]);
        if (!local) continue;
        const bool unpacks = entry.method == kMethodStored || entry.method == kMethodDeflated;
        Require(located == (unpacks && !CheckReadable(entry, *local)),
                "both tell alike whether headers let a member be opened");
        if (located && IsSound(window, records->Archive(), data)) sound.emplace(members[i], data);
    }
    std::size_t reached = 0;
    for (ZipTreeNode* node : NodesOf(volume)) {
        ExamineContents(volume, *node, sound);
        reached += node->Header() != nullptr;
    }

    const MemberNames names(records, volume);
    for (std::uint32_t number = 0; number < records->Count(); ++number) {
        std::string_view name = names.Name(number);
        const bool folder = name.ends_with('/');
        if (folder) name.remove_suffix(1);
        const MemberNames::Numbers same = folder ? names.Inside(name) : names.FilesAt(name);
        Require(std::find(same.begin(), same.end(), number) != same.end(), "a member is found by its spelling");
    }
    Require(reached + names.Hidden({}).size() <= members.size(), "what a path leads to is not hidden");
}

void UnpackForeignMembers(const ArchiveRecords& records) {
    for (std::size_t index = 0; index < records.Count(); ++index) {
        const ArchiveEntry entry = records.Entry(index);
        if (!IsForeignMethod(entry.method)) continue;
        const Result<LocalRecord> local = ReadLocalRecord(records, entry);
        if (!local) continue;
        const ContentsReader read = UnpackMember(records, entry, *local);
        char buffer[4096];
        std::uint64_t size = 0;
        Result<std::size_t> count = read(buffer, sizeof buffer);
        for (; count && *count != 0; count = read(buffer, sizeof buffer)) size += *count;
        Require(!count || size == entry.uncompressedSize, "what unpacks has its size");
    }
}

}  // namespace

}  // namespace ZEMA

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ZEMA;
    const RefPointer<File> file(new fuzzing::MemoryFile(fuzzing::TextOf(data, size), false));
    const Result<ArchiveRecords::Pointer> records = ArchiveRecords::Read(file);
    const Result<ArchiveRecords::Pointer> mending = ArchiveRecords::ReadForMending(file);
    Require(!records || mending, "who repairs archives reads all that others read");
    if (mending) UnpackForeignMembers(**mending);

    const RefPointer<ZipStorageVolume> volume = New<ZipStorageVolume>(file.Get(), kReadStyle);
    if (size == 0 || !volume->Open()) return 0;
    if (records) {
        ExamineBoth(*records, *volume);
    } else {
        for (ZipTreeNode* node : NodesOf(*volume)) ExamineContents(*volume, *node, {});
    }
    return 0;
}

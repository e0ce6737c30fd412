#include "host/archive/ArchiveComparison.h"

#include <cstdint>
#include <set>
#include <utility>

#include "storage/zip/ZipFormat.h"
#include "storage/zip/ZipRecords.h"

namespace ZEMA {

namespace {

using Order = ZipStorageVolume::DirectoryOrder;

bool IsSame(const ZipFileHeader& a, const ZipFileHeader& b) {
    return a.centralHeaderOffset == b.centralHeaderOffset && a.localHeaderOffset == b.localHeaderOffset &&
           a.flags == b.flags && a.method == b.method && a.crc32 == b.crc32 && a.compressedSize == b.compressedSize &&
           a.uncompressedSize == b.uncompressedSize;
}

// The local header of a member whose data was located in the edit must lead to the same place.
bool LeadsToSameData(const ZipFileHeader& edited, ZipStorageVolume& volume, ZipFileHeader& written) {
    if (edited.dataOffset == 0) return true;
    return volume.LocateData(written) && written.dataOffset == edited.dataOffset;
}

// Empty where it cannot be read.
std::string StoredName(const ZipStorageVolume& volume, const ZipFileHeader& member) {
    char bytes[kCentralHeaderSize];
    ZipCentralHeader header;
    const std::uint64_t position = volume.CentralHeaderPosition(member);
    if (!ReadAt(volume.Archive(), position, sizeof(bytes), bytes)) return "";
    if (!ParseCentralHeader(bytes, header)) return "";
    std::string name(header.nameLength, '\0');
    return ReadAt(volume.Archive(), position + sizeof(bytes), name.size(), name.data()) ? name : "";
}

// Whether all named members of `written` have the same names in `edited`.
bool HaveSameNames(const ZipStorageVolume& edited, const ZipStorageVolume& written) {
    std::vector<std::pair<const ZipTreeNode*, const ZipTreeNode*>> pending = {
        {&edited.RootNode(), &written.RootNode()}};
    while (!pending.empty()) {
        const auto [expected, found] = pending.back();
        pending.pop_back();
        for (const auto& [name, child] : found->GetChildren()) {
            const ZipTreeNode* const twin = expected->FindChild(name);
            if (twin == nullptr || !(twin->Name() == child->Name())) return false;
            const ZipFileHeader* const a = twin->Header();
            const ZipFileHeader* const b = child->Header();
            if ((a == nullptr) != (b == nullptr)) return false;
            if (a != nullptr && a->centralHeaderOffset != b->centralHeaderOffset) return false;
            if (!child->GetChildren().Empty()) pending.emplace_back(twin, child.Get());
        }
    }
    return CountNamedMembers(edited) == CountNamedMembers(written);
}

}  // namespace

std::vector<ZipFileHeader*> MembersBelow(const ZipTreeNode& top) {
    std::vector<ZipFileHeader*> members;
    std::vector<const ZipTreeNode*> pending = {&top};
    while (!pending.empty()) {
        const ZipTreeNode* const node = pending.back();
        pending.pop_back();
        if (node->Header() != nullptr) members.push_back(node->Header());
        for (const auto& child : node->GetChildren()) pending.push_back(child.second.Get());
    }
    return members;
}

std::size_t CountNamedMembers(const ZipStorageVolume& volume) {
    return MembersBelow(volume.RootNode()).size();
}

std::vector<std::string> NamesOfHiddenFiles(const ZipStorageVolume& volume) {
    std::vector<std::string> names;
    const std::vector<ZipFileHeader*> named = MembersBelow(volume.RootNode());
    if (named.size() == volume.EndRecord().entryCount) return names;
    const std::set<const ZipFileHeader*> seen(named.begin(), named.end());
    for (const ZipFileHeader* member = volume.MembersInDirectoryOrder().First(); member != nullptr;
         member = Order::Next(member)) {
        if (seen.count(member) != 0) continue;
        const std::string name = StoredName(volume, *member);
        if (!name.ends_with('/')) names.push_back(name);
    }
    return names;
}

bool HoldSameMembers(const ZipStorageVolume& edited, ZipStorageVolume& written) {
    const ZipFileHeader* expected = edited.MembersInDirectoryOrder().First();
    ZipFileHeader* found = written.MembersInDirectoryOrder().First();
    for (; expected != nullptr && found != nullptr; expected = Order::Next(expected), found = Order::Next(found)) {
        if (!IsSame(*expected, *found) || !LeadsToSameData(*expected, written, *found)) return false;
    }
    return expected == nullptr && found == nullptr && edited.EndRecord().entryCount == written.EndRecord().entryCount &&
           edited.EndRecord().directoryOffset == written.EndRecord().directoryOffset && HaveSameNames(edited, written);
}

}  // namespace ZEMA

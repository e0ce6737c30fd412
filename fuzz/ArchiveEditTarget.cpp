// An archive of any bytes that is edited in place, as the input says. After every step it opens again, is what the
// volume that edited it thinks it is, and the members that the step was not about have their bytes.
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/Fuzzing.h"
#include "host/archive/LocalRecord.h"
#include "storage/PathOperations.h"
#include "storage/zip/ZipFormat.h"
#include "storage/zip/ZipStorageDirectory.h"

namespace ZEMA {

namespace {

using DirectoryOrder = ZipStorageVolume::DirectoryOrder;
using fuzzing::MemoryFile;
using fuzzing::Require;

// The name and the packed bytes of every member.
using Members = std::vector<std::pair<std::string, std::string>>;

// None where members share bytes, or something is missing: who edits such an archive moves what another one claims, be
// it open or not. Only a member's next neighbours are asked whether they do.
std::optional<Members> MembersOf(const std::string& bytes) {
    const Result<ArchiveRecords::Pointer> read = ArchiveRecords::Read(RefPointer<File>(new MemoryFile(bytes, false)));
    if (!read) return std::nullopt;
    const ArchiveRecords& records = **read;
    Members members(records.Count());
    std::uint64_t end = 0;
    for (const std::uint32_t number : records.FileOrder()) {
        const ArchiveEntry entry = records.Entry(number);
        const Result<LocalRecord> local = ReadLocalRecord(records, entry);
        if (!local || entry.localHeaderOffset < end) return std::nullopt;
        end = local->dataOffset + local->dataSize + ((entry.flags & kFlagDescriptor) != 0 ? 12 : 0);
        members[number] = {std::string(entry.name), bytes.substr(local->dataOffset, local->dataSize)};
    }
    if (end > records.DirectoryOffset()) return std::nullopt;
    return members;
}

// What a volume knows of where things are.
std::vector<std::uint64_t> Bookkeeping(const ZipStorageVolume& volume) {
    const ZipEndRecord& end = volume.EndRecord();
    std::vector<std::uint64_t> all{end.position, end.entryCount, end.directorySize, end.directoryOffset,
                                   volume.CentralDirectoryEnd()};
    for (auto* member = volume.MembersInDirectoryOrder().First(); member; member = DirectoryOrder::Next(member)) {
        all.insert(all.end(), {member->localHeaderOffset, member->centralHeaderOffset, member->flags, member->method,
                               member->crc32, member->compressedSize, member->archivedSize});
    }
    return all;
}

std::string ContentsOf(File& file) {
    std::string bytes(GetSize(file), '\0');
    return ReadAt(file, 0, bytes.size(), bytes.data()) ? bytes : "";
}

class Editor {
public:
    Editor(MemoryFile& archive, ZipStorageVolume& volume, fuzzing::Choices choices)
        : archive_(archive),
          volume_(volume),
          root_(New<ZipStorageDirectory>(String(), nullptr, &volume, &volume.RootNode())),
          choices_(choices) {}

    bool IsDone() const { return !choices_.AreLeft(); }

    void Step() {
        const std::string before = archive_.bytes;
        members_ = MembersOf(before);
        touched_.clear();
        Do(choices_.Below(7), before);
        CheckArchive();
        if (members_) CheckHeld();
    }

private:
    void Do(std::size_t what, const std::string& before) {
        const String path = ChoosePath();
        const Spot place = SpotOf(path);
        switch (what) {
            case 0:
                return Write(path);
            case 1:
                if (!place.parent->CreateDirectory(place.name)) RequireUnchanged(before);
                return;
            case 2:
                if (!place.parent->Remove(place.name, choices_.Below(2) != 0)) RequireUnchanged(before);
                return;
            case 3: {
                const String target = FromUtf8(choices_.Text());
                Touch(*place.parent, target);
                place.parent->Rename(place.name, target);
                return;
            }
            case 4: {
                const Spot target = SpotOf(ChoosePath());
                const bool overwrite = choices_.Below(2) != 0;
                (choices_.Below(2) != 0)
                    ? place.parent->Move(place.name, target.parent.Get(), target.name, overwrite, true)
                    : place.parent->Copy(place.name, target.parent.Get(), target.name, overwrite, true);
                return;
            }
            case 5:
                return Hold(path);
            default:
                held_.clear();
        }
    }

    // Where a path leads: a directory that is there, and a name in it.
    struct Spot {
        RefPointer<Directory> parent;
        String name;
    };

    Spot SpotOf(const String& path) {
        BasicArray<String> parts;
        path.Split('/', parts);
        if (parts.Empty()) return {root_, String()};
        String name = parts.Back();
        parts.PopBack();
        RefPointer<Directory> parent = OpenDirectory(*root_, parts, false);
        if (!parent || dynamic_cast<ZipStorageDirectory*>(parent.Get()) == nullptr) parent = root_;
        Touch(*parent, name);
        return {parent, name};
    }

    // Mostly what is there, or something in it.
    String ChoosePath() {
        BasicArray<RefPointer<ZipTreeNode>> nodes;
        volume_.RootNode().CollectSubtree(nodes);
        String path;
        const std::size_t chosen = choices_.Below(nodes.Size());
        for (const ZipTreeNode* node = nodes[chosen].Get(); node->Parent() != nullptr; node = node->Parent()) {
            String above = node->Name();
            if (!path.IsEmpty()) above.Append("/");
            above.Append(path);
            path = above;
        }
        if (choices_.Below(2) == 0) return path;
        if (!path.IsEmpty()) path.Append("/");
        path.Append(FromUtf8(choices_.Text()));
        return path;
    }

    // A step is about a name in a directory: the members at it and below may change.
    void Touch(Directory& directory, const String& name) {
        ZipTreeNode* const node = dynamic_cast<ZipStorageDirectory&>(directory).Node().FindChild(name);
        if (node == nullptr) return;
        BasicArray<RefPointer<ZipTreeNode>> nodes;
        node->CollectSubtree(nodes);
        std::set<const ZipFileHeader*> members;
        for (const RefPointer<ZipTreeNode>& below : nodes) members.insert(below->Header());
        std::size_t number = 0;
        for (auto* member = volume_.MembersInDirectoryOrder().First(); member; member = DirectoryOrder::Next(member)) {
            if (members.count(member) != 0) touched_.insert(number);
            ++number;
        }
    }

    void Write(const String& path) {
        const Spot place = SpotOf(path);
        std::string bytes(choices_.Text());
        for (std::size_t doublings = choices_.Below(12); doublings > 0; --doublings) bytes += bytes;
        const std::uint64_t offset = choices_.Byte(), start = choices_.Byte();
        RefPointer<File> file(
            place.parent->OpenFile(place.name, &kReadWriteStyle, true, choices_.Below(2) != 0 ? &start : nullptr));
        if (!file) return;
        static_cast<void>(WriteAt(*file, offset, bytes.size(), bytes.data()));
        const std::string written = ContentsOf(*file);
        const ZipFileHeader& member =
            *dynamic_cast<ZipStorageDirectory&>(*place.parent).Node().FindChild(place.name)->Header();
        file.Reset();
        if (member.dirty) return;  // it was not written back
        file.Reset(place.parent->OpenFile(place.name, &kReadStyle, false, nullptr));
        Require(file && ContentsOf(*file) == written, "what was written is read");
    }

    // Open for reading, nobody may write it, and it may not be removed.
    void Hold(const String& path) {
        RefPointer<File> file = OpenFile(*root_, path, &kReadStyle, false, nullptr);
        if (!file) return;
        std::string contents = ContentsOf(*file);
        held_.emplace_back(std::move(file), std::move(contents));
    }

    void RequireUnchanged(const std::string& before) const {
        Require(archive_.bytes == before, "what is refused changes nothing");
    }

    void CheckHeld() const {
        for (const auto& [file, contents] : held_)
            Require(ContentsOf(*file) == contents, "what is open stays as it is");
    }

    void CheckArchive() const {
        const RefPointer<File> file(new MemoryFile(archive_.bytes, false));
        const RefPointer<ZipStorageVolume> fresh = New<ZipStorageVolume>(file.Get(), kReadStyle);
        Require(fresh->Open(), "an edited archive opens again");
        Require(Bookkeeping(volume_) == Bookkeeping(*fresh), "who edited an archive knows where things are");
        if (!members_) return;
        const std::optional<Members> after = MembersOf(archive_.bytes);
        Require(after.has_value(), "members that lay apart still do");
        std::size_t next = 0;
        for (std::size_t number = 0; number < members_->size(); ++number) {
            if (touched_.count(number) != 0) continue;
            while (next < after->size() && (*after)[next] != (*members_)[number]) ++next;
            Require(next < after->size(), "other members keep their bytes");
            ++next;
        }
    }

    MemoryFile& archive_;
    ZipStorageVolume& volume_;
    const RefPointer<Directory> root_;
    fuzzing::Choices choices_;
    std::optional<Members> members_;  // before the step
    std::set<std::size_t> touched_;   // their numbers
    std::vector<std::pair<RefPointer<File>, std::string>> held_;
};

}  // namespace

}  // namespace ZEMA

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ZEMA;
    const fuzzing::DocumentAndChoices input(fuzzing::TextOf(data, size));
    const RefPointer<MemoryFile> archive(new MemoryFile(input.document, true));
    const RefPointer<ZipStorageVolume> volume = New<ZipStorageVolume>(archive.Get(), kReadWriteStyle);
    if (!volume->Open()) return 0;
    Editor editor(*archive, *volume, input.choices);
    for (int steps = 0; steps < 12 && !editor.IsDone(); ++steps) editor.Step();
    return 0;
}

// An archive of any bytes that the commands write anew, as the input says, or that they repair where it says nothing.
// The new archive has by its records what was planned; where none is written, the old one is as it was.
#include <optional>
#include <string>
#include <vector>

#include "fuzz/Fuzzing.h"
#include "host/archive/ArchiveMend.h"
#include "host/archive/ArchivePass.h"
#include "host/archive/ArchiveRewrite.h"
#include "host/archive/LocalRecord.h"
#include "storage/zip/ZipFormat.h"

namespace ZEMA {

namespace {

using fuzzing::Folder;
using fuzzing::MemoryFile;
using fuzzing::Require;

// What a member of the new archive must have.
struct Expected {
    std::string name;
    std::uint32_t crc32;
    std::uint64_t size;
    std::optional<std::string> packed;  // none where it is packed anew
    std::string comment = {};
};

ContentsReader ReaderOf(std::string text) {
    return [text](void* buffer, std::size_t size) mutable -> Result<std::size_t> {
        const std::size_t count = text.copy(static_cast<char*>(buffer), size);
        text.erase(0, count);
        return count;
    };
}

std::string PackedBytes(const ArchiveRecords& records, const ArchiveEntry& entry) {
    const Result<LocalRecord> local = ReadLocalRecord(records, entry);
    std::string bytes(local ? local->dataSize : 0, '\0');
    Require(!local || ReadAt(records.Archive(), local->dataOffset, bytes.size(), bytes.data()), "data can be read");
    return bytes;
}

Expected Unchanged(const ArchiveRecords& records, std::size_t index) {
    const ArchiveEntry entry = records.Entry(index);
    return {std::string(entry.name), entry.crc32, entry.uncompressedSize, PackedBytes(records, entry),
            std::string(entry.comment)};
}

// One rewrite of the archive at a path.
class Edit {
public:
    Edit(ArchiveRewrite& rewrite, fuzzing::Choices choices)
        : rewrite_(rewrite), records_(*rewrite.Records()), choices_(choices) {
        for (std::size_t index = 0; index < records_.Count(); ++index) kept_.push_back(Unchanged(records_, index));
    }

    void Plan() {
        for (int steps = 0; steps < 12 && choices_.AreLeft() && !failed_; ++steps) Change(choices_.Below(6));
    }

    // In the order of the new directory.
    std::vector<Expected> Members() const {
        std::vector<Expected> members;
        for (const std::optional<Expected>& member : kept_) {
            if (member) members.push_back(*member);
        }
        members.insert(members.end(), added_.begin(), added_.end());
        return members;
    }

    bool Failed() const { return failed_; }

private:
    void Change(std::size_t what) {
        const std::size_t index = choices_.Below(kept_.size());
        std::string text(choices_.Text());
        if (what < 4 && kept_.empty()) return;
        switch (what) {
            case 0:
                rewrite_.Remove(index);
                kept_[index].reset();
                return;
            case 1:
                if (!rewrite_.Rename(index, text) && kept_[index]) {
                    // A rename takes back that the member was to be packed anew.
                    kept_[index] = Unchanged(records_, index);
                    kept_[index]->name = text;
                }
                return;
            case 2:
                Repack(index);
                return;
            case 3:
                if (Failed(rewrite_.AddPacked(rewrite_.Records(), index, text))) return;
                added_.push_back(Unchanged(records_, index));
                added_.back().name = text;
                return;
            case 4:
                if (Failed(rewrite_.AddFile({text, 1}, ReaderOf(text + text)))) return;
                added_.push_back(Packed(text, text + text));
                return;
            default:
                rewrite_.AddFolder({text + "/"});
                added_.push_back({text + "/", 0, 0, ""});
        }
    }

    // With the contents that it has, where that is easily told.
    void Repack(std::size_t index) {
        const ArchiveEntry entry = records_.Entry(index);
        const std::string contents = PackedBytes(records_, entry);
        const Expected packed = Packed(std::string(entry.name), contents);
        const bool isSound = packed.crc32 == entry.crc32 && packed.size == entry.uncompressedSize;
        if (entry.method != kMethodStored || !isSound) return;
        if (Failed(rewrite_.Repack(index, ReaderOf(contents))) || !kept_[index]) return;
        kept_[index] = packed;
        kept_[index]->comment = entry.comment;
    }

    static Expected Packed(const std::string& name, const std::string& contents) {
        ContentsSums sums;
        sums.Add(contents.data(), contents.size());
        return {name, sums.Crc32(), contents.size(), std::nullopt};
    }

    // After a failure the rewrite is good for nothing more.
    bool Failed(const Failure& failure) { return failed_ = failed_ || failure; }

    ArchiveRewrite& rewrite_;
    const ArchiveRecords& records_;
    fuzzing::Choices choices_;
    std::vector<std::optional<Expected>> kept_;
    std::vector<Expected> added_;
    bool failed_ = false;
};

void RequireMembers(const std::string& bytes, const std::vector<Expected>& members) {
    const auto read = ArchiveRecords::Read(RefPointer<File>(new MemoryFile(bytes, false)));
    Require(read && (*read)->Count() == members.size(), "the new archive has the members that were planned");
    std::uint64_t end = 0;
    FileWindow window;
    for (const std::uint32_t number : (*read)->FileOrder()) {
        const ArchiveEntry entry = (*read)->Entry(number);
        const Expected& member = members[number];
        const Result<LocalRecord> local = ReadLocalRecord(window, **read, entry);
        Require(local && entry.localHeaderOffset >= end && !CheckKept(entry, *local), "members lie one by one");
        end = local->End();
        Require(entry.name == member.name && entry.comment == member.comment && entry.crc32 == member.crc32 &&
                    entry.uncompressedSize == member.size,
                "a member has its name, comment, size and checksum");
        if (member.packed) {
            Require(PackedBytes(**read, entry) == *member.packed, "packed bytes are taken over");
        } else {
            Require(IsSound(window, (*read)->Archive(),
                            {local->dataOffset, local->dataSize, member.size, member.crc32, entry.method}),
                    "what was packed anew unpacks");
        }
    }
    Require(end <= (*read)->DirectoryOffset(), "members lie before the directory");
}

// What the proof of a new archive finds is a fault of ours, whatever the old one was.
void RequireProven(const Failure& failure) {
    Require(failure.text.find("what was written is not what should be there") == std::string::npos, "a proof succeeds");
}

// Whether the archive was written anew, as it should be.
bool TryEdit(const std::string& path, fuzzing::Choices choices) {
    ArchiveRewrite::Options options;
    options.drop = choices.Below(2) != 0;
    const auto rewrite = ArchiveRewrite::Begin(path, options);
    if (!rewrite) return false;
    Edit edit(**rewrite, choices);
    edit.Plan();
    const std::vector<Expected> members = edit.Members();
    if (edit.Failed()) return false;
    if (const Failure failure = (*rewrite)->Commit()) {
        RequireProven(failure);
        return false;
    }
    RequireMembers(Folder().Read("a"), members);
    return true;
}

bool TryMend(const std::string& path, std::string_view document) {
    const auto old = ArchiveRecords::ReadForMending(RefPointer<File>(new MemoryFile(document, false)));
    const Result<MendReport> report = MendArchive(path, {});
    RequireProven(report.Why());
    if (!report || !report->obstacles.empty() || report->faults.empty()) return false;
    Require(bool(old), "what is repaired can be read");
    const std::string bytes = Folder().Read("a");
    const RefPointer<File> mended(new MemoryFile(bytes, false));
    Require(IsFineArchive(*mended), "a repaired archive is fine");
    std::vector<Expected> members;
    for (std::size_t index = 0; index < (*old)->Count(); ++index) {
        members.push_back(Unchanged(**old, index));
        const std::uint16_t method = (*old)->Entry(index).method;
        if (method != kMethodStored && method != kMethodDeflated) members.back().packed.reset();
    }
    RequireMembers(bytes, members);
    return true;
}

}  // namespace

}  // namespace ZEMA

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ZEMA;
    const fuzzing::DocumentAndChoices input(fuzzing::TextOf(data, size));
    const std::string document(input.document);
    const std::string path = Folder().Write("a", document);
    const bool written = input.choices.AreLeft() ? TryEdit(path, input.choices) : TryMend(path, document);
    Require(written || Folder().Read("a") == document, "an archive is written anew or stays as it was");
    const std::filesystem::directory_iterator files(Folder().Path());
    Require(std::distance(begin(files), end(files)) == 1, "nothing else is left behind");
    return 0;
}

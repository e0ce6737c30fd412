// Copying and moving: wqf cp and mv.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "host/archive/ArchiveCommands.h"
#include "host/archive/ArchiveEdits.h"
#include "host/archive/CopyPlan.h"
#include "host/archive/ExtendedAttributes.h"
#include "host/archive/MarkedFile.h"
#include "host/archive/MemberNames.h"
#include "host/archive/StorageReader.h"
#include "host/system/Paths.h"

namespace ZEMA {

namespace {

// Whether the item is a folder in an archive that is only there because of what lies in it.
bool IsImplied(const StorageItem& item) {
    return item.archive && item.node->Header() == nullptr;
}

// The number of the member that the item is, unless its archive is not understood well enough.
std::optional<std::uint32_t> NumberOf(const StorageItem& item) {
    if (!item.archive || IsImplied(item) || !item.archive->Names()) return std::nullopt;
    return (*item.archive->Names())->NumberOf(*item.node->Header());
}

std::optional<ArchiveEntry> EntryOf(const StorageItem& item) {
    const std::optional<std::uint32_t> number = NumberOf(item);
    return number ? std::optional((*item.archive->Names())->Entry(*number)) : std::nullopt;
}

// The permissions for what comes out of an archive: its own, or those that its flags stand for, as far as the user
// lets.
mode_t ModeFor(const StorageItem& source) {
    const std::optional<ArchiveEntry> entry = EntryOf(source);
    const mode_t own = entry ? entry->UnixMode() : 0;
    mode_t mode = own & 0777;
    if (own == 0) {
        mode = source.facts.IsFolder() ? 0777 : 0444;
        if (source.facts.flags.Has(ElementFlags::kWritable)) mode |= 0222;
        if (source.facts.flags.Has(ElementFlags::kExecutable)) mode |= 0111;
    }
    return mode & ~CurrentUmask();
}

Failure CopyContents(StorageReader& source, int target, const std::string& targetName) {
    std::vector<char> buffer(kReadBufferSize);
    for (std::uint64_t offset = 0;;) {
        const Result<std::size_t> count = source.Read(buffer.data(), buffer.size());
        if (!count) return count.Why();
        if (*count == 0) return {};
        if (!WriteAllAt(target, offset, *count, buffer.data())) return SystemFailure(errno).In(targetName);
        offset += *count;
    }
}

// A file that is there keeps its owner and permissions, but not where something is moved there. False with errno.
bool GiveAttributes(const StorageItem& source, const std::string& path, bool move, int to) {
    mode_t mode = ModeFor(source);
    struct stat present;
    if (!move && stat(path.c_str(), &present) == 0) {
        mode = present.st_mode & 0777;
        if (fchown(to, present.st_uid, present.st_gid) != 0) errno = 0;  // it is the user's own then
        CopyExtendedAttributes(path, to);
    }
    const std::optional<ArchiveEntry> entry = EntryOf(source);
    if (const std::optional<std::int64_t> seconds = entry ? entry->ModifiedSeconds() : std::nullopt) {
        const timespec times[] = {{0, UTIME_OMIT}, {static_cast<std::time_t>(*seconds), 0}};
        futimens(to, times);
    }
    return fchmod(to, mode) == 0;
}

// Failures are those of the source, unless they name the target.
Failure WriteNativeFile(const StorageItem& source, const StorageItem& target, bool move) {
    const std::string name = "'" + target.shown + "'";
    // A copy goes to where a link leads, as the user's shell has it; a moved file takes the link's place.
    const std::string path = target.facts.isLink && !move ? RealPath(target.native) : target.native;
    const Result<std::unique_ptr<StorageReader>> reader = StorageReader::Open(source);
    if (!reader) return reader.Why();
    MarkedFile file;
    if (const Failure failure = file.Create(path)) return failure.In(name);
    if (Failure failure = CopyContents(**reader, file.Descriptor(), name)) return failure;
    if (!GiveAttributes(source, path, move, file.Descriptor())) return SystemFailure(errno).In(name);
    const Failure failure = file.Commit(MarkedFile::Place::Replace, move);
    return failure ? failure.In(name) : Failure();
}

Failure MakeNativeFolder(const StorageItem& source, const StorageItem& target) {
    if (target.facts.IsFolder()) return {};
    // Whatever the source's permissions, the rest must find room in it.
    if (mkdir(target.native.c_str(), ModeFor(source) | S_IRWXU) == 0) return {};
    return SystemFailure(errno).In("'" + target.shown + "'");
}

// Takes the steps of a plan: all that goes into one archive in one rewrite, everything else file by file. What is moved
// is removed when it is in its new place, and only then.
class CopyRun {
public:
    CopyRun(CopyPlan& plan, const CopyOptions& options, ArchiveEdits& edits, StorageReport& report)
        : plan_(plan), options_(options), edits_(edits), report_(report) {}

    void Run() {
        const StorageItem& target = plan_.Target();
        if (plan_.Steps().empty()) return;
        if (!target.archive)
            MarkedFile::RemoveLeftovers(target.facts.IsFolder() ? target.native : FolderOf(target.native));
        for (const CopyPlan::Step& step : plan_.Steps()) {
            if (!targetFailed_) Take(step);
        }
        if (targetFailed_ || (target.archive && !edits_.Commit(target.native))) return;
        if (!options_.move) return;
        RemoveMembers();
        RemoveNativeSources();
        edits_.CommitAll();
    }

private:
    void Take(const CopyPlan::Step& step) {
        const StorageItem source = plan_.SourceOf(step);
        const StorageItem target = plan_.TargetOf(step);
        const Failure failure = target.archive            ? TakeIntoArchive(step, source, target)
                                : source.facts.IsFolder() ? MakeNativeFolder(source, target)
                                                          : WriteNativeFile(source, target, options_.move);
        if (!failure) return;
        plan_.Operands()[step.operand].complete = false;
        if (!target.archive) return report_.Fail(source.shown, failure.text);
        edits_.GiveUp(target.native, source.shown, failure);
        targetFailed_ = true;
    }

    Failure TakeIntoArchive(const CopyPlan::Step& step, const StorageItem& source, const StorageItem& target) {
        ArchiveRewrite& archive = *edits_.Change(target.native);
        const MemberNames& names = **target.archive->Names();
        const std::string spelling = target.facts.IsMissing() ? names.NewSpellingOf(target.inner, target.innerBytes)
                                                              : names.SpellingOf(target.inner, target.innerBytes);
        if (source.facts.IsFile()) {
            for (const std::uint32_t replaced : names.FilesAt(spelling)) archive.Remove(replaced);
            if (target.facts.IsFile()) TellOfOtherSpelling(target, spelling);
        }
        if (step.rename) return Rename(archive, names, source, spelling);
        if (source.facts.IsFolder() && (target.facts.IsFolder() || IsImplied(source))) return {};
        const std::string name = source.facts.IsFolder() ? spelling + "/" : spelling;
        if (const std::optional<std::uint32_t> number = NumberOf(source)) {
            return archive.AddPacked((*source.archive->Names())->Records(), *number, name);
        }
        return Pack(archive, source, name);
    }

    // An import reads the first member of a name, whatever its case.
    void TellOfOtherSpelling(const StorageItem& target, const std::string& spelling) const {
        const MemberNames& names = **target.archive->Names();
        const MemberNames::Numbers others = names.OtherFilesAt(target.inner, spelling);
        if (others.empty()) return;
        report_.Note("'" + target.shown + "' is replaced, but an import reads '" +
                     std::string(names.Name(others.front())) + "'");
    }

    static Failure Pack(ArchiveRewrite& archive, const StorageItem& source, const std::string& name) {
        NewMember member;
        member.name = name;
        member.modifiedSeconds = source.facts.modified ? source.facts.modified->tv_sec : std::time(nullptr);
        member.mode = source.archive ? ModeFor(source) : source.facts.mode;
        if (source.facts.IsFolder()) {
            archive.AddFolder(member);
            return {};
        }
        const Result<std::unique_ptr<StorageReader>> reader = StorageReader::Open(source);
        if (!reader) return reader.Why();
        return archive.AddFile(member, [&](void* buffer, std::size_t size) { return (*reader)->Read(buffer, size); });
    }

    // The member, and all that is spelled as lying below it, but for what another source has taken along.
    Failure Rename(ArchiveRewrite& archive, const MemberNames& names, const StorageItem& source,
                   const std::string& spelling) {
        const std::string old = names.SpellingOf(source.inner, source.innerBytes);
        MemberNames::Numbers members = names.FilesAt(old);
        const MemberNames::Numbers inside = names.Inside(old);
        members.insert(members.end(), inside.begin(), inside.end());
        // An empty folder that is there goes, so that there are not two of them.
        for (const std::uint32_t folder : names.FilesAt(spelling + "/")) archive.Remove(folder);
        renamed_.resize(archive.Records()->Count());
        for (const std::uint32_t member : members) {
            if (renamed_[member]) continue;
            renamed_[member] = true;
            const std::string name(names.Name(member));
            if (const Failure failure = archive.Rename(member, spelling + name.substr(old.size()))) {
                return failure.In("'" + name + "'");
            }
        }
        return {};
    }

    // What was taken, under whatever spelling, and the folders around it.
    void RemoveMembers() {
        for (const CopyPlan::Operand& operand : plan_.Operands()) {
            const StorageItem& source = operand.source;
            if (!operand.complete || !source.archive || source.archive == plan_.Target().archive) continue;
            ArchiveRewrite& archive = *edits_.Change(source.native);
            const MemberNames& names = **source.archive->Names();
            for (const ZipFileHeader* const member : MembersBelow(*source.node)) {
                archive.Remove(names.NumberOf(*member));
            }
            if (!source.facts.IsFolder()) continue;
            for (const std::uint32_t member : names.Inside(names.SpellingOf(source.inner, source.innerBytes))) {
                if (names.Name(member).ends_with('/')) archive.Remove(member);
            }
        }
    }

    // What was taken and nothing else: a folder stays with what has come into it meanwhile.
    void RemoveNativeSources() {
        for (auto step = plan_.Steps().rbegin(); step != plan_.Steps().rend(); ++step) {
            const CopyPlan::Operand& operand = plan_.Operands()[step->operand];
            if (operand.source.archive || !operand.complete) continue;
            const StorageItem source = plan_.SourceOf(*step);
            const char* const path = source.native.c_str();
            if ((source.facts.IsFolder() ? rmdir(path) : unlink(path)) == 0) continue;
            report_.Fail(source.shown, SystemFailure(errno).text);
        }
    }

    CopyPlan& plan_;
    const CopyOptions& options_;
    ArchiveEdits& edits_;
    StorageReport& report_;
    bool targetFailed_ = false;
    std::vector<bool> renamed_;  // of the members of the target's archive
};

// Of all archives that the command changes.
void BeginEdits(const std::vector<std::string>& sources, const std::string& target, const CopyOptions& options,
                ArchiveEdits& edits) {
    std::set<std::string> archives = {StorageTree::FileOn(target)};
    for (const std::string& source : sources) {
        const std::string file = options.move ? StorageTree::FileOn(source) : "";
        if (file.size() < source.size()) archives.insert(file);
    }
    archives.erase("");
    edits.Begin(archives, options.force);
}

}  // namespace

void CopyPaths(const std::vector<std::string>& sources, const std::string& target, const CopyOptions& options,
               StorageReport& report) {
    ArchiveEdits edits(report);
    BeginEdits(sources, target, options, edits);
    CopyPlan plan(options, edits, report);
    if (plan.Make(sources, target)) CopyRun(plan, options, edits, report).Run();
}

}  // namespace ZEMA

// Copying and moving: wqf cp and mv.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <set>

#include "host/archive/ArchiveCommands.h"
#include "host/archive/ArchiveEdits.h"
#include "host/archive/CopyPlan.h"
#include "host/archive/ExtendedAttributes.h"
#include "host/archive/ReplacementFile.h"
#include "host/archive/StorageReader.h"
#include "host/system/Paths.h"

namespace ZEMA {

namespace {

mode_t Umask() {
    const mode_t mask = umask(0);
    umask(mask);
    return mask;
}

// The permissions for what comes out of an archive: it is for everybody whom the user lets.
mode_t ModeFor(const StorageItem& source) {
    mode_t mode = 0444;
    if (source.facts.flags.Has(ElementFlags::kWritable)) mode |= 0222;
    if (source.facts.flags.Has(ElementFlags::kExecutable)) mode |= 0111;
    return (source.facts.IsFolder() ? 0777 : mode) & ~Umask();
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

// Failures are those of the source, unless they name the target.
Failure WriteNativeFile(const StorageItem& source, const StorageItem& target, bool move) {
    const std::string name = "'" + target.shown + "'";
    // A copy goes to where a link leads, as the user's shell has it; a moved file takes the link's place.
    const std::string path = target.facts.isLink && !move ? RealPath(target.native) : target.native;
    const Result<std::unique_ptr<StorageReader>> reader = StorageReader::Open(source);
    if (!reader) return reader.Why();
    ReplacementFile file;
    if (const Failure failure = file.Create(path)) return failure.In(name);
    if (Failure failure = CopyContents(**reader, file.Descriptor(), name)) return failure;
    mode_t mode = ModeFor(source);
    struct stat present;
    if (!move && stat(path.c_str(), &present) == 0) {
        mode = present.st_mode & 0777;
        if (fchown(file.Descriptor(), present.st_uid, present.st_gid) != 0) errno = 0;  // it is the user's own then
        CopyExtendedAttributes(path, file.Descriptor());
    }
    const Failure failure = file.Commit(mode, move);
    return failure ? failure.In(name) : Failure();
}

Failure MakeNativeFolder(const StorageItem& source, const StorageItem& target) {
    if (target.facts.IsFolder()) return {};
    // Whatever the source's permissions, the rest must find room in it.
    if (mkdir(target.native.c_str(), ModeFor(source) | S_IRWXU) == 0) return {};
    return SystemFailure(errno).In("'" + target.shown + "'");
}

class CopyRun {
public:
    CopyRun(CopyPlan& plan, const CopyOptions& options, StorageReport& report)
        : plan_(plan), options_(options), report_(report) {}

    void Run() {
        if (plan_.Steps().empty()) return;
        BeginEdits();
        for (const CopyPlan::Step& step : plan_.Steps()) Take(step);
        const StorageItem* const target = plan_.TargetArchive();
        if (options_.move && target != nullptr) RemoveMembers(*target, true);
        if (target != nullptr && !edits_.Commit(target->native, report_)) targetFailed_ = true;
        if (options_.move && !targetFailed_) {
            RemoveMembers(plan_.Target(), false);
            RemoveNativeSources();
        }
        edits_.CommitAll(report_);
    }

private:
    void BeginEdits() {
        std::set<std::string> archives;
        if (plan_.TargetArchive() != nullptr) archives.insert(plan_.TargetArchive()->native);
        for (const CopyPlan::Operand& operand : plan_.Operands()) {
            if (options_.move && operand.source.archive) archives.insert(operand.source.native);
        }
        edits_.Begin(archives, options_.force, report_);
        targetFailed_ = plan_.TargetArchive() != nullptr && edits_.Find(plan_.TargetArchive()->native) == nullptr;
    }

    void Take(const CopyPlan::Step& step) {
        if (targetFailed_) return;
        const StorageItem source = plan_.SourceOf(step);
        const StorageItem target = plan_.TargetOf(step);
        const Failure failure = TakeInto(source, target);
        if (!failure) return;
        plan_.Operands()[step.operand].complete = false;
        if (!target.archive) return report_.Fail(source.shown, failure.text);
        edits_.GiveUp(target.native, source.shown, failure.text, report_);
        targetFailed_ = true;
    }

    Failure TakeInto(const StorageItem& source, const StorageItem& target) {
        const bool folder = source.facts.IsFolder();
        if (!target.archive) {
            return folder ? MakeNativeFolder(source, target) : WriteNativeFile(source, target, options_.move);
        }
        SafeEdit& edit = *edits_.Find(target.native);
        if (folder) return target.facts.IsFolder() ? Failure() : edit.AddFolder(target.inner);
        const Result<std::unique_ptr<StorageReader>> reader = StorageReader::Open(source);
        return reader ? edit.WriteFile(target.inner, **reader) : reader.Why();
    }

    // Of the operands that came out of archives, those in the archive of the target, whose edit is still open, or the
    // others.
    void RemoveMembers(const StorageItem& target, bool inTarget) {
        for (const CopyPlan::Operand& operand : plan_.Operands()) {
            const StorageItem& source = operand.source;
            if (operand.complete && source.archive && edits_.IsSame(source.native, target.native) == inTarget) {
                RemoveMember(source);
            }
        }
    }

    void RemoveMember(const StorageItem& source) {
        SafeEdit* const edit = edits_.Find(source.native);
        if (edit == nullptr) return;
        const bool same = source.archive->IsOf(edit->Original());
        const Failure failure = same ? edit->Remove(source.inner)
                                     : Failure{FailureKind::Refused, "somebody else has changed the archive meanwhile"};
        if (failure) edits_.GiveUp(source.native, source.shown, failure.text, report_);
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
    StorageReport& report_;
    ArchiveEdits edits_;
    bool targetFailed_ = false;
};

}  // namespace

void CopyPaths(const std::vector<std::string>& sources, const std::string& target, const CopyOptions& options,
               StorageReport& report) {
    CopyPlan plan(options, report);
    if (plan.Make(sources, target)) CopyRun(plan, options, report).Run();
}

}  // namespace ZEMA

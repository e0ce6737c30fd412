// Copying and moving: wqf cp and mv.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
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

// The permissions for a new file or folder. What comes out of an archive is for everybody whom the user lets.
mode_t ModeFor(const StorageItem& source) {
    struct stat status;
    if (!source.archive && stat(source.native.c_str(), &status) == 0) return status.st_mode & 0777 & ~Umask();
    mode_t mode = 0444;
    if (source.facts.flags.Has(ElementFlags::kWritable)) mode |= 0222;
    if (source.facts.flags.Has(ElementFlags::kExecutable)) mode |= 0111;
    return (source.facts.IsFolder() ? 0777 : mode) & ~Umask();
}

// To the end, whatever the size says: files that the system makes up have none.
bool CopyContents(StorageReader& source, int target, std::string& problem) {
    std::uint64_t offset = source.Descriptor() < 0 ? 0 : CopyStart(source.Descriptor(), target);
    std::vector<char> buffer(kReadBufferSize);
    while (true) {
        const std::optional<std::size_t> count = source.Read(buffer.data(), buffer.size(), problem);
        if (!count || *count == 0) return count.has_value();
        if (!WriteAllAt(target, offset, *count, buffer.data())) {
            problem = SystemFailure(errno).text;
            return false;
        }
        offset += *count;
    }
}

// The message begins with the source, and the problem is one of the target. False, as the failure that it is.
bool NameTarget(const StorageItem& target, std::string& problem) {
    problem = "'" + target.shown + "': " + problem;
    return false;
}

bool WriteNativeFile(const StorageItem& source, const StorageItem& target, bool move, std::string& problem) {
    // A copy goes to where a link leads, as the user's shell has it; a moved file takes the link's place.
    const std::string path = target.facts.isLink && !move ? RealPath(target.native) : target.native;
    const std::unique_ptr<StorageReader> reader = StorageReader::Open(source, problem);
    ReplacementFile file;
    if (!reader) return false;
    if (!file.Create(path, problem)) return NameTarget(target, problem);
    if (!CopyContents(*reader, file.Descriptor(), problem)) return false;
    mode_t mode = ModeFor(source);
    struct stat present;
    if (!move && stat(path.c_str(), &present) == 0) {
        mode = present.st_mode & 0777;
        if (fchown(file.Descriptor(), present.st_uid, present.st_gid) != 0) errno = 0;  // it is the user's own then
        CopyExtendedAttributes(path, file.Descriptor());
    }
    if (source.facts.modified) {
        const timespec times[] = {{0, UTIME_OMIT}, *source.facts.modified};
        futimens(file.Descriptor(), times);
    }
    return file.Commit(mode, move, problem) || NameTarget(target, problem);
}

bool MakeNativeFolder(const StorageItem& source, const StorageItem& target, std::string& problem) {
    if (target.facts.IsFolder()) return true;
    // Whatever the source's permissions, the rest must find room in it.
    if (mkdir(target.native.c_str(), ModeFor(source) | S_IRWXU) == 0) return true;
    problem = SystemFailure(errno).text;
    return NameTarget(target, problem);
}

class CopyRun {
public:
    CopyRun(CopyPlan& plan, const CopyOptions& options, StorageReport& report)
        : plan_(plan), options_(options), report_(report) {}

    void Run() {
        BeginEdits();
        for (const CopyPlan::Step& step : plan_.Steps()) Take(step);
        const StorageItem* const target = plan_.TargetArchive();
        if (options_.move && target != nullptr) RemoveSources(target->native, true);
        if (target != nullptr && !edits_.Commit(target->native, report_)) targetFailed_ = true;
        if (options_.move && !targetFailed_) RemoveSources(target != nullptr ? target->native : "", false);
        edits_.CommitAll(report_);
    }

private:
    void BeginEdits() {
        std::set<std::string> archives;
        if (plan_.Steps().empty()) return;
        if (plan_.TargetArchive() != nullptr) archives.insert(plan_.TargetArchive()->native);
        for (const CopyPlan::Operand& operand : plan_.Operands()) {
            if (options_.move && operand.source.archive) archives.insert(operand.source.native);
        }
        edits_.Begin(archives, options_.force, report_);
        targetFailed_ = plan_.TargetArchive() != nullptr && edits_.Find(plan_.TargetArchive()->native) == nullptr;
    }

    void Take(const CopyPlan::Step& step) {
        std::string problem;
        const StorageItem source = plan_.SourceOf(step);
        const StorageItem target = plan_.TargetOf(step);
        if (targetFailed_ || (step.rename ? Rename(source, target, problem) : TakeInto(source, target, problem)))
            return;
        plan_.Operands()[step.operand].complete = false;
        if (!target.archive) {
            report_.Fail(source.shown, problem);
        } else {
            edits_.GiveUp(target.native, source.shown, problem, report_);
            targetFailed_ = true;
        }
    }

    static bool Rename(const StorageItem& source, const StorageItem& target, std::string& problem) {
        if (std::rename(source.native.c_str(), target.native.c_str()) == 0) return true;
        problem = SystemFailure(errno).text;
        return NameTarget(target, problem);
    }

    bool TakeInto(const StorageItem& source, const StorageItem& target, std::string& problem) {
        const bool folder = source.facts.IsFolder();
        if (!target.archive) {
            return folder ? MakeNativeFolder(source, target, problem)
                          : WriteNativeFile(source, target, options_.move, problem);
        }
        SafeEdit& edit = *edits_.Find(target.native);
        if (folder) return target.facts.IsFolder() || edit.AddFolder(target.inner, problem);
        const std::unique_ptr<StorageReader> reader = StorageReader::Open(source, problem);
        return reader && edit.WriteFile(target.inner, *reader, problem);
    }

    // Those in the archive at `target`, whose edit is still open, or the others.
    void RemoveSources(const std::string& target, bool inTarget) {
        std::set<std::size_t> renamed;
        for (const CopyPlan::Step& step : plan_.Steps()) {
            if (step.rename) renamed.insert(step.operand);
        }
        for (std::size_t i = 0; i < plan_.Operands().size(); ++i) {
            const CopyPlan::Operand& operand = plan_.Operands()[i];
            const bool same = operand.source.archive && RealPath(operand.source.native) == RealPath(target);
            if (operand.complete && same == inTarget && renamed.count(i) == 0) RemoveSource(operand.source);
        }
    }

    void RemoveSource(const StorageItem& source) {
        std::string problem;
        if (!source.archive) {
            RemoveNative(source.native, source.shown, true, report_);
        } else if (SafeEdit* const edit = edits_.Find(source.native); edit != nullptr) {
            const bool same = source.archive->IsOf(edit->Original());
            if (!same) problem = "somebody else has changed the archive meanwhile";
            if (!same || !edit->Remove(source.inner, problem)) {
                edits_.GiveUp(source.native, source.shown, problem, report_);
            }
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

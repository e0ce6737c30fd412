#include "host/archive/ArchiveEdits.h"

#include <sys/stat.h>
#include <unistd.h>

#include <utility>

#include "host/system/Paths.h"

namespace ZEMA {

void EditMembers(const std::vector<StorageItem>& members, bool force, const MemberChange& change,
                 StorageReport& report) {
    std::set<std::string> archives;
    for (const StorageItem& member : members) archives.insert(member.native);
    ArchiveEdits edits;
    edits.Begin(archives, force, report);
    for (const StorageItem& member : members) {
        SafeEdit* const edit = edits.Find(member.native);
        std::string problem;
        if (edit == nullptr || change(*edit, member, problem)) continue;
        edits.GiveUp(member.native, member.shown, problem, report);
    }
    edits.CommitAll(report);
}

bool IsWriteProtected(const std::string& path) {
    // The superuser may write to everything, and still protects files.
    struct stat status;
    if (stat(path.c_str(), &status) != 0) return false;
    return (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0 || access(path.c_str(), W_OK) != 0;
}

void ArchiveEdits::Begin(const std::set<std::string>& archives, bool force, StorageReport& report) {
    std::map<std::string, std::string> sorted;  // to the paths as they were given
    for (const std::string& archive : archives) sorted.emplace(RealPath(archive), archive);
    std::set<std::pair<dev_t, ino_t>> locked;  // a second lock on one file would wait for the first for ever
    for (const auto& [real, archive] : sorted) {
        std::string problem = "it is write-protected";
        std::unique_ptr<SafeEdit> edit;
        struct stat status = {};
        if (stat(real.c_str(), &status) == 0 && !locked.emplace(status.st_dev, status.st_ino).second) {
            problem = "the command names the same file by another name too";
        } else if (force || !IsWriteProtected(real))
            edit = SafeEdit::Begin(real, problem);
        if (!edit) report.Fail(archive, problem);
        edits_[real] = {archive, std::move(edit)};
    }
}

SafeEdit* ArchiveEdits::Find(const std::string& archive) const {
    const auto found = edits_.find(RealPath(archive));
    return found == edits_.end() ? nullptr : found->second.edit.get();
}

void ArchiveEdits::GiveUp(const std::string& archive, const std::string& path, const std::string& problem,
                          StorageReport& report) {
    report.Fail(path, problem);
    report.Note("'" + archive + "' is left as it was");
    edits_[RealPath(archive)].edit.reset();
}

bool ArchiveEdits::Commit(const std::string& archive, StorageReport& report) {
    std::string problem;
    const std::unique_ptr<SafeEdit> edit = std::move(edits_[RealPath(archive)].edit);
    if (!edit) return false;
    if (edit->Commit(problem)) return true;
    report.Fail(archive, problem);
    return false;
}

void ArchiveEdits::CommitAll(StorageReport& report) {
    for (const auto& item : edits_) {
        if (item.second.edit) Commit(item.second.given, report);
    }
}

}  // namespace ZEMA

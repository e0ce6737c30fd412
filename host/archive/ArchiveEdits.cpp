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
        const Failure failure = edit != nullptr ? change(*edit, member) : Failure();
        if (failure) edits.GiveUp(member.native, member.shown, failure.text, report);
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
    for (const std::string& archive : archives) {
        const std::string real = RealPath(archive);
        realPaths_[archive] = real;
        edits_[real].given = archive;
    }
    std::set<std::pair<dev_t, ino_t>> locked;  // a second lock on one file would wait for the first for ever
    for (auto& [real, item] : edits_) {
        struct stat status = {};
        if (stat(real.c_str(), &status) == 0 && !locked.emplace(status.st_dev, status.st_ino).second) {
            report.Fail(item.given, "the command names the same file by another name too");
        } else if (!force && IsWriteProtected(real)) {
            report.Fail(item.given, "it is write-protected");
        } else if (Result<std::unique_ptr<SafeEdit>> edit = SafeEdit::Begin(real)) {
            item.edit = std::move(*edit);
        } else {
            report.Fail(item.given, edit.Why().text);
        }
    }
}

SafeEdit* ArchiveEdits::Find(const std::string& archive) const {
    return edits_.at(realPaths_.at(archive)).edit.get();
}

bool ArchiveEdits::IsSame(const std::string& a, const std::string& b) const {
    const auto first = realPaths_.find(a);
    const auto second = realPaths_.find(b);
    return first != realPaths_.end() && second != realPaths_.end() && first->second == second->second;
}

void ArchiveEdits::GiveUp(const std::string& archive, const std::string& path, const std::string& problem,
                          StorageReport& report) {
    report.Fail(path, problem);
    report.Note("'" + archive + "' is left as it was");
    edits_.at(realPaths_.at(archive)).edit.reset();
}

bool ArchiveEdits::Commit(const std::string& archive, StorageReport& report) {
    const std::unique_ptr<SafeEdit> edit = std::move(edits_.at(realPaths_.at(archive)).edit);
    if (!edit) return false;
    const Failure failure = edit->Commit();
    if (failure) report.Fail(archive, failure.text);
    return !failure;
}

void ArchiveEdits::CommitAll(StorageReport& report) {
    for (const auto& item : edits_) {
        if (item.second.edit) Commit(item.second.given, report);
    }
}

}  // namespace ZEMA

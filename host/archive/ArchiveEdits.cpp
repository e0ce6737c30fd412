#include "host/archive/ArchiveEdits.h"

#include <sys/stat.h>
#include <unistd.h>

#include <utility>

#include "host/system/Paths.h"

namespace ZEMA {

bool IsWriteProtected(const std::string& path) {
    // The superuser may write to everything, and still protects files.
    struct stat status;
    if (stat(path.c_str(), &status) != 0) return false;
    return (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0 || access(path.c_str(), W_OK) != 0;
}

void ArchiveEdits::Begin(const std::set<std::string>& archives, bool force) {
    for (const std::string& archive : archives) {
        const std::string real = RealPath(archive);
        realPaths_[archive] = real;
        edits_[real].given = archive;
    }
    ArchiveRewrite::Options options;
    options.force = force;
    std::set<std::pair<dev_t, ino_t>> locked;  // a second lock on one file would wait for the first for ever
    for (auto& [real, edit] : edits_) {
        options.tellWaiting = [this, given = edit.given] { report_.Note("'" + given + "' is in use; waiting for it"); };
        struct stat status = {};
        if (stat(real.c_str(), &status) == 0 && !locked.emplace(status.st_dev, status.st_ino).second) {
            edit.failure = Refusal("the command names the same file by another name too");
        } else if (!force && IsWriteProtected(real)) {
            edit.failure = WriteProtected();
        } else {
            Result<std::unique_ptr<ArchiveRewrite>> rewrite = ArchiveRewrite::Begin(real, options);
            if (rewrite) edit.rewrite = std::move(*rewrite);
            if (!rewrite) edit.failure = rewrite.Why();
        }
    }
}

bool ArchiveEdits::CanEdit(const std::string& archive, const MountedArchive& mounted) {
    Edit& edit = Find(archive);
    if (edit.rewrite && !edit.rewrite->IsOf(mounted.Descriptor())) {
        edit.rewrite.reset();
        edit.failure = Refusal("somebody else has changed it meanwhile");
    }
    if (edit.rewrite && !mounted.Names()) edit.failure = mounted.Names().Why();
    if (!edit.failure) return edit.rewrite != nullptr;
    if (!edit.told) report_.Fail(edit.given, edit.failure.text);
    edit.told = true;
    return false;
}

ArchiveRewrite* ArchiveEdits::Change(const std::string& archive) {
    Edit& edit = Find(archive);
    edit.changed = true;
    return edit.rewrite.get();
}

void ArchiveEdits::GiveUp(const std::string& archive, const std::string& path, const Failure& failure) {
    report_.Fail(path, failure.text);
    report_.Note("'" + archive + "' is left as it was");
    Find(archive).rewrite.reset();
}

bool ArchiveEdits::Commit(const std::string& archive) {
    return Commit(Find(archive));
}

bool ArchiveEdits::Commit(Edit& edit) {
    const std::unique_ptr<ArchiveRewrite> rewrite = std::move(edit.rewrite);
    if (!rewrite) return false;
    const Failure failure = edit.changed ? rewrite->Commit() : Failure();
    if (failure) report_.Fail(edit.given, failure.text);
    return !failure;
}

void ArchiveEdits::CommitAll() {
    for (auto& item : edits_) {
        if (item.second.rewrite) Commit(item.second);
    }
}

}  // namespace ZEMA

// The edits of one command, one for each archive.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>

#include "host/archive/ArchiveRewrite.h"
#include "host/archive/MountedArchive.h"
#include "host/archive/StorageReport.h"

namespace ZEMA {

// Begins all edits before anything is planned, in the order of the archives' paths, so that two commands that want the
// same archives do not wait for each other, and what is planned is what is edited.
//
// Archives are named by the paths of their files, also through links; Begin finds out where each leads, and the other
// operations know the paths that it was given.
class ArchiveEdits {
public:
    explicit ArchiveEdits(StorageReport& report) : report_(report) {}

    // Once, before all else. `force` also edits write-protected archives and those that cannot be replaced without loss
    // of what surrounds them. Nothing is told of those that cannot be edited.
    void Begin(const std::set<std::string>& archives, bool force);

    // Whether the archive, as it was mounted since, can be edited. Tells the reason, once for each archive, where not.
    bool CanEdit(const std::string& archive, const MountedArchive& mounted);

    // The edit of an archive that can be edited, to be changed; null after it was given up.
    ArchiveRewrite* Change(const std::string& archive);

    // Tells why a change failed and gives up the whole edit of the archive, which stays as it was.
    void GiveUp(const std::string& archive, const std::string& path, const Failure& failure);

    // False, with the reason told, when the edit failed or was given up. An archive without changes is left alone.
    bool Commit(const std::string& archive);
    void CommitAll();

private:
    // One archive, its rewrite or why there is none.
    struct Edit {
        std::string given;  // one of the paths by which the user knows it
        std::unique_ptr<ArchiveRewrite> rewrite;
        Failure failure;  // to begin it
        bool told = false;
        bool changed = false;
    };

    Edit& Find(const std::string& archive) { return edits_.at(realPaths_.at(archive)); }
    bool Commit(Edit& edit);

    StorageReport& report_;
    std::map<std::string, Edit> edits_;             // by paths without links
    std::map<std::string, std::string> realPaths_;  // by the paths as they were given
};

// Whether a file may only be replaced with force.
bool IsWriteProtected(const std::string& path);

}  // namespace ZEMA

// The edits of one command, one for each archive.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "host/archive/SafeEdit.h"
#include "host/archive/StorageReport.h"
#include "host/archive/StorageTree.h"

namespace ZEMA {

// Begins all edits before the first change, in the order of the archives' paths, so that two commands that want the
// same archives do not wait for each other.
//
// Archives are named by the paths of their files, also through links; Begin finds out where each leads, and the other
// operations know the paths that it was given.
class ArchiveEdits {
public:
    // Once, before all else. `force` also edits write-protected archives. Those that cannot be edited are
    // told of and have no edit.
    void Begin(const std::set<std::string>& archives, bool force, StorageReport& report);

    // Null where there is none (any more).
    SafeEdit* Find(const std::string& archive) const;

    // Whether both paths name one archive of the command.
    bool IsSame(const std::string& a, const std::string& b) const;

    // Tells why a change failed and gives up the whole edit of the archive, which stays as it was.
    void GiveUp(const std::string& archive, const std::string& path, const std::string& problem, StorageReport& report);

    // False, with the reason told, when the edit failed or there is none.
    bool Commit(const std::string& archive, StorageReport& report);
    void CommitAll(StorageReport& report);

private:
    struct Edit {
        std::string given;  // one of the paths by which the user knows it
        std::unique_ptr<SafeEdit> edit;
    };
    std::map<std::string, Edit> edits_;             // by paths without links
    std::map<std::string, std::string> realPaths_;  // by the paths as they were given
};

// Makes the same change to each of the members, in the edit of its archive, and commits all edits. A change that
// fails gives up the edit of that archive alone.
using MemberChange = std::function<Failure(SafeEdit& edit, const StorageItem& member)>;
void EditMembers(const std::vector<StorageItem>& members, bool force, const MemberChange& change,
                 StorageReport& report);

// Whether a file may only be replaced with force.
bool IsWriteProtected(const std::string& path);

}  // namespace ZEMA

// Changes to an archive, made by writing it anew: as a whole or not at all.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/archive/ArchivePass.h"
#include "host/archive/ArchiveRecords.h"
#include "host/archive/LockedArchive.h"
#include "host/archive/ScratchArchive.h"
#include "host/system/Failure.h"

namespace ZEMA {

// A member that is to be made.
struct NewMember {
    std::string name = {};             // bytes, as they will stand in the archive; ends in "/" for a folder
    std::int64_t modifiedSeconds = 0;  // since 1970; what a date of MS-DOS cannot say becomes the nearest that it can
    mode_t mode = 0644;                // permissions, of which 0777 count
};

// One command's changes to one archive. They are planned first, in any order. Commit then
//
//   - writes one new archive beside the old one: all members that stay, as they lie in the file, and the new ones
//     behind them, each with its packed bytes, date, mode and comment as they are;
//   - reads the new archive and proves that nothing is lost;
//   - puts it in the old one's place, with the same owner, permissions, access list and extended attributes.
//
// Until Commit has succeeded the old archive stays as it was, byte for byte.
//
// Members are known by their index in the old records. Names are bytes and are not looked at: whoever plans sees to it
// that none is there twice.
//
// What cannot be kept makes the commit be refused, with the member named: a local header that is missing or disagrees
// with the directory, data that leave the file, ZIP64, encryption that ties a member to its place; and so do bytes
// between members that are not zero. Only what is removed may be damaged.
//
// Memory does not depend on the sizes of members, but for the new file that is just being packed.
//
// Files:  one rewrite at a time works on an archive, a second one waits: the archive is locked from Begin until the
//         object goes. An archive that somebody else changes meanwhile is not replaced.
// Errors: after a failure the object is good for nothing more.
class ArchiveRewrite {
public:
    // What the user allows, and what is told while waiting.
    struct Options {
        // Also replaces what is write-protected, what has several names (hard links), and what has a group, an access
        // list or extended attributes that cannot be given to the new file.
        bool force = false;

        // Called once when another command has held the archive for a second.
        std::function<void()> tellWaiting = {};

        // For the repair of archives: the directory alone is believed (see ArchiveRecords::ReadForMending).
        bool mending = false;
        bool drop = false;  // what stands in front, or belongs to no member, and the comment
    };

    // Follows links, waits for the lock, removes what killed commands left behind in the folder, and reads the records.
    static Result<std::unique_ptr<ArchiveRewrite>> Begin(const std::string& path, const Options& options);

    // The same for an archive that is not there yet. Commit does not replace what somebody else puts there meanwhile.
    static Result<std::unique_ptr<ArchiveRewrite>> BeginNew(const std::string& path, const Options& options);

    ArchiveRewrite(const ArchiveRewrite&) = delete;
    ArchiveRewrite& operator=(const ArchiveRewrite&) = delete;

    // The old archive; without members where there is none.
    const ArchiveRecords::Pointer& Records() const { return plan_.old; }

    // Whether the old archive is the open file, as that is now.
    bool IsOf(int file) const { return archive_ && archive_->IsOf(file); }

    void Remove(std::size_t index);

    // Refused where UTF-8 and other bytes would come together in the name, or in the name and the comment, which one
    // flag tells apart for both.
    Failure Rename(std::size_t index, std::string name);

    // Packs a member's contents anew, in the way of new members, and leaves everything else about it as it is. Commit
    // fails where the reader gives other contents than the old ones.
    Failure Repack(std::size_t index, const ContentsReader& read);

    // Packs the file at once, so that its source may go.
    Failure AddFile(const NewMember& member, const ContentsReader& read);
    void AddFolder(const NewMember& member);

    // Takes a member over from another archive, or once more from this one, as it is but for its name. Commit reads it.
    Failure AddPacked(ArchiveRecords::Pointer source, std::size_t index, std::string name);

    Failure Commit();

private:
    explicit ArchiveRewrite(std::string path, const Options& options)
        : path_(std::move(path)), options_(options), scratch_(path_) {}
    void TakeOver(ArchiveRecords::Pointer old);
    ArchivePlan FinishPlan();
    Failure Replace(const ArchivePlan& plan);

    const std::string path_;  // without links
    const Options options_;
    std::optional<LockedArchive> archive_;
    RefPointer<File> file_;  // of the archive
    ScratchArchive scratch_;
    ArchivePlan plan_;           // with all members of the old archive until it is finished
    std::vector<bool> removed_;  // of those
};

}  // namespace ZEMA

// Files and folders as users name them: outside archives, and inside as if archives were folders.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/BasicArray.h"
#include "core/String.h"
#include "host/archive/MountedArchive.h"
#include "host/system/Failure.h"
#include "storage/ElementAttributes.h"

namespace ZEMA {

enum class StorageKind { Missing, File, Folder, Other };  // of a link: of what it leads to

// What is known of a thing without opening it.
struct StorageFacts {
    StorageKind kind = StorageKind::Missing;
    bool isLink = false;
    std::uint64_t size = 0;  // bytes, of a file
    ElementFlags flags;
    std::optional<timespec> modified;  // what lies in archives has none here
    mode_t mode = 0;                   // permissions outside of archives, 0777 at most
    int error = 0;                     // an errno value where the system does not say whether it is there

    bool IsFile() const { return kind == StorageKind::File; }
    bool IsFolder() const { return kind == StorageKind::Folder; }
    bool IsMissing() const { return kind == StorageKind::Missing; }
};

// Why something is missing that should not be.
Failure WhyMissing(const StorageFacts& facts);

// A thing that is there, or a name that something may be given.
struct StorageItem {
    std::string shown;                // how the user knows it, any bytes
    std::string native;               // its path in the file system; of a thing in an archive, the path of the archive
    MountedArchive::Pointer archive;  // null outside of archives
    BasicArray<String> inner;         // its path in the archive; a name that is not UTF-8 is the empty text
    std::string innerBytes;           // the same in bytes, with "/" between the names
    RefPointer<ZipTreeNode> node;     // null outside of archives and where nothing is there
    StorageFacts facts;

    bool IsArchiveRoot() const { return archive != nullptr && inner.Empty(); }
};

// Names a thing in the folder that `item` was; what is known of it is for the caller to find out.
void AppendName(StorageItem& item, const std::string& name);

// Paths that are longer are not followed into trees. The system takes no longer ones, and an archive of a few bytes can
// hold a tree whose paths would fill any memory.
inline constexpr std::size_t kLongestPath = 4095;  // bytes

// One entry of a folder.
struct StorageEntry {
    std::string name;  // bytes
    StorageFacts facts;
};

// Follows paths for the length of one command. Archives are only read; for as long as an item in one is there, all that
// is found in it is as it was then.
//
// A path is one of the file system. Where it leads on behind the name of a regular file that is an archive, by its
// contents and whatever its name is, or ends in a slash there, it goes on inside; so it does at an archive in an
// archive. Names in archives are found without regard to case.
class StorageTree {
public:
    // The regular file, an archive maybe, that a path leads to or goes on behind; empty where there is none.
    static std::string FileOn(const std::string& path);

    // What the path names, which may be missing. A failure when the way there does not exist or leads through what is
    // no folder, or when the system does not say.
    Result<StorageItem> Find(const std::string& path);

    // The archive as a folder, where the item is the file of one; otherwise the item as it is. A failure for what looks
    // like an archive and cannot be mounted.
    Result<StorageItem> Enter(const StorageItem& item);

    // What a folder holds, sorted by bytes outside of archives and ignoring case inside. After a failure the entries
    // are those that could be read.
    Failure List(const StorageItem& folder, std::vector<StorageEntry>& entries) const;

    // The thing of that name in a folder, missing or not.
    StorageItem Child(const StorageItem& folder, const std::string& name) const;

private:
    Result<StorageItem> FindInside(const std::string& archive, const std::string& rest);
    Result<StorageItem> FindBehind(const std::string& path);
    void Descend(StorageItem& item, const std::string& name) const;
    Result<MountedArchive::Pointer> Mount(const std::string& path);

    std::vector<std::weak_ptr<const MountedArchive>> mounted_;  // by the items that are still there
    MountedArchive::Pointer last_;                              // by nobody else maybe, but likely soon
};

// Bytes as a name in archives; null where they are not UTF-8.
std::optional<String> MemberName(const std::string& bytes);

}  // namespace ZEMA

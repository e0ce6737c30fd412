// Archives opened for reading.
#pragma once

#include <sys/stat.h>

#include <memory>
#include <string>

#include "core/RefPointer.h"
#include "host/system/Failure.h"
#include "host/system/FileDescriptor.h"
#include "storage/zip/ZipStorageVolume.h"
#include "storage/zip/ZipTreeNode.h"

namespace ZEMA {

// Keeps the archive file, and an archive that this one is a member of, open. What it gives out as plain references
// lives as long as it does.
class MountedArchive {
public:
    using Pointer = std::shared_ptr<const MountedArchive>;

    // Never null. The failure NoArchive says that nothing in the file looks like an archive; a file that fails
    // otherwise may well be one, and must not be replaced as if it were none.
    static Result<Pointer> Open(const std::string& path);

    // The same for the member `node` of `outer`.
    static Result<Pointer> OpenMember(const Pointer& outer, ZipTreeNode& node);

    ZipStorageVolume& Volume() const { return *volume_; }
    ZipTreeNode& Root() const { return volume_->RootNode(); }
    bool IsMember() const { return outer_ != nullptr; }

    // Whether it was mounted from the file of this status.
    bool IsOf(const struct stat& status) const;

private:
    MountedArchive() = default;
    Failure Mount(File& file);

    Pointer outer_;
    FileDescriptor file_;
    struct stat status_ = {};
    RefPointer<ZipStorageVolume> volume_;
};

// Opens a member for reading.
Result<RefPointer<File>> OpenMemberFile(ZipStorageVolume& volume, ZipTreeNode& node);

}  // namespace ZEMA

// Archives opened for reading.
#pragma once

#include <sys/stat.h>

#include <memory>
#include <string>

#include "core/RefPointer.h"
#include "host/system/FileDescriptor.h"
#include "storage/zip/ZipStorageVolume.h"
#include "storage/zip/ZipTreeNode.h"

namespace ZEMA {

// Keeps the archive file, and an archive that this one is a member of, open. What it gives out as plain references
// lives as long as it does.
class MountedArchive {
public:
    using Pointer = std::shared_ptr<const MountedArchive>;

    // Null, with a `problem`, when the file cannot be read. When it is no archive that can be mounted, the problem is
    // empty if nothing in it looks like one.
    static Pointer Open(const std::string& path, std::string& problem);

    // The same for the member `node` of `outer`.
    static Pointer OpenMember(const Pointer& outer, ZipTreeNode& node, std::string& problem);

    ZipStorageVolume& Volume() const { return *volume_; }
    ZipTreeNode& Root() const { return volume_->RootNode(); }
    bool IsMember() const { return outer_ != nullptr; }

    // Whether it was mounted from the file of this status.
    bool IsOf(const struct stat& status) const;

private:
    MountedArchive() = default;
    bool Mount(File& file, std::string& problem);

    Pointer outer_;
    FileDescriptor file_;
    struct stat status_ = {};
    RefPointer<ZipStorageVolume> volume_;
};

// Opens a member for reading. Null, with a `problem` that says why, when it cannot be read.
RefPointer<File> OpenMemberFile(ZipStorageVolume& volume, ZipTreeNode& node, std::string& problem);

}  // namespace ZEMA

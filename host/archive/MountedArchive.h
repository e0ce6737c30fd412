// Archives opened for reading.
#pragma once

#include <sys/stat.h>

#include <memory>
#include <optional>
#include <string>

#include "core/RefPointer.h"
#include "host/archive/MemberNames.h"
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

    // All its members by name, put together at the first call. A failure, the same every time, says why the archive
    // can be read, but is not understood well enough to be changed.
    const Result<std::unique_ptr<const MemberNames>>& Names() const;

    int Descriptor() const { return descriptor_.Get(); }  // of the file; -1 for a member of another archive

    // Whether it was mounted from the file of this status.
    bool IsOf(const struct stat& status) const;

private:
    MountedArchive() = default;
    Failure Mount(RefPointer<File> file);
    Result<std::unique_ptr<const MemberNames>> ReadNames() const;

    Pointer outer_;
    FileDescriptor descriptor_;
    struct stat status_ = {};
    RefPointer<File> file_;
    RefPointer<ZipStorageVolume> volume_;
    mutable std::optional<Result<std::unique_ptr<const MemberNames>>> names_;
};

// Why an archive is not mounted whose names make more of a tree than there is memory for.
Failure TooManyNames();

// Opens a member for reading.
Result<RefPointer<File>> OpenMemberFile(ZipStorageVolume& volume, ZipTreeNode& node);

}  // namespace ZEMA

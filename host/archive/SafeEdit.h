// Changes to an archive that happen as a whole or not at all.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <memory>
#include <string>

#include "core/BasicArray.h"
#include "core/String.h"
#include "host/archive/OverlayFile.h"
#include "host/archive/ReplacementFile.h"
#include "host/archive/StorageReader.h"
#include "host/system/FileDescriptor.h"
#include "storage/zip/ZipStorageDirectory.h"

namespace ZEMA {

// Edits a copy beside the archive, compares what it then holds with what it should hold, and puts it in the archive's
// place. Until Commit succeeds the archive stays as it was; without it the copy goes again. The archive keeps its
// permissions and, where the system lets it, its owner; of a link the file it leads to is replaced.
//
// Only one edit at a time works on an archive; a second one waits for the first. An archive that somebody else changes
// meanwhile is not replaced.
//
// Paths are lists of names below the archive's root. After a failure the edit is good for nothing more.
class SafeEdit {
public:
    // Takes away what killed programs left behind.
    static Result<std::unique_ptr<SafeEdit>> Begin(const std::string& path);

    SafeEdit(const SafeEdit&) = delete;
    SafeEdit& operator=(const SafeEdit&) = delete;
    ~SafeEdit();

    // Makes the folders that are missing.
    Failure AddFolder(const BasicArray<String>& path);

    // Makes or replaces a file in a folder that is there, and lifts its write protection.
    Failure WriteFile(const BasicArray<String>& path, StorageReader& contents);

    // With all below it, whatever is protected; every member of that name, should there be several.
    Failure Remove(const BasicArray<String>& path);

    // The archive as it is until the commit.
    const struct stat& Original() const { return before_; }

    Failure Commit();

private:
    SafeEdit() = default;
    Failure LockArchive(const std::string& path);
    Failure Mount();
    Failure MendLastMember();
    Failure RemoveOne(const BasicArray<String>& path);
    RefPointer<File> OpenForWriting(const BasicArray<String>& path);
    bool IsUnchanged() const;
    Failure Reason(const char* otherwise) const;
    ZipTreeNode* Find(const BasicArray<String>& path) const;
    ZipStorageVolume& Volume() const { return root_->Volume(); }

    std::string path_;  // without links
    FileDescriptor archive_;
    struct stat before_ = {};
    ReplacementFile copy_;
    RefPointer<OverlayFile> file_;
    RefPointer<ZipStorageDirectory> root_;
    bool hidesMembers_ = false;  // no path leads to some members, because another one has their name; edits add none
};

}  // namespace ZEMA

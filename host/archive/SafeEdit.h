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
// Paths are lists of names below the archive's root. Each operation answers false with a `problem`, and the edit is
// then good for nothing more.
class SafeEdit {
public:
    // Takes away what killed programs left behind.
    static std::unique_ptr<SafeEdit> Begin(const std::string& path, std::string& problem);

    SafeEdit(const SafeEdit&) = delete;
    SafeEdit& operator=(const SafeEdit&) = delete;
    ~SafeEdit();

    // Makes the folders that are missing.
    [[nodiscard]] bool AddFolder(const BasicArray<String>& path, std::string& problem);

    // Makes or replaces a file in a folder that is there, and lifts its write protection.
    [[nodiscard]] bool WriteFile(const BasicArray<String>& path, StorageReader& contents, std::string& problem);

    // With all below it, whatever is protected; every member of that name, should there be several.
    [[nodiscard]] bool Remove(const BasicArray<String>& path, std::string& problem);

    // The archive as it is until the commit.
    const struct stat& Original() const { return before_; }

    [[nodiscard]] bool Commit(std::string& problem);

private:
    SafeEdit() = default;
    bool LockArchive(const std::string& path, std::string& problem);
    bool Mount(std::string& problem);
    bool MendLastMember(std::string& problem);
    bool RemoveOne(const BasicArray<String>& path, std::string& problem);
    RefPointer<File> OpenForWriting(const BasicArray<String>& path);
    bool IsUnchanged() const;
    std::string Reason(const char* otherwise) const;
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

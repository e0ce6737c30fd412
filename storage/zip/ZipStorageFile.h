// An open member of a mounted archive.
#pragma once

#include <cstdint>

#include "storage/File.h"
#include "storage/zip/ZipStorageVolume.h"
#include "storage/zip/ZipTreeNode.h"

namespace ZEMA {

class Directory;

// Reads and writes the member's contents in memory, which all files open on the member share; a stored member that is
// only read is served straight from the archive. The last file to close writes changes back, if it was opened for
// writing; otherwise they are lost.
//
// Ownership: holds the volume and the node, and counts itself in the member.
class ZipStorageFile : public File {
public:
    // Opens the member of `node`, whose directory is `parent`. Null when the sharing rules forbid it, when the member
    // cannot be read, or when it cannot be cut to `truncateTo`. A new object of count 0.
    static ZipStorageFile* Open(ZipStorageVolume& volume, ZipTreeNode& node, Directory* parent, AccessStyle style,
                                const std::uint64_t* truncateTo);

    void OnLastRelease() override;

    bool SetFlags(const ElementFlags* flags) override;

    ElementFlags GetFlags() override;
    bool SetTimes(const ElementTimes* times) override;
    ElementTimes GetTimes() override;

    bool ReadAt(std::uint64_t offset, std::uint64_t size, void* buffer, std::uint64_t* done) override;
    bool WriteAt(std::uint64_t offset, std::uint64_t size, const void* buffer, std::uint64_t* done) override;
    bool Read(std::uint64_t size, void* buffer, std::uint64_t* done) override;
    bool Write(std::uint64_t size, const void* buffer, std::uint64_t* done) override;
    std::uint64_t GetSize() override;
    bool SetSize(std::uint64_t size) override;
    std::uint64_t GetPosition() override;
    bool Seek(std::uint64_t position) override;

protected:
    ~ZipStorageFile() override;

private:
    ZipStorageFile(ZipStorageVolume& volume, ZipTreeNode& node, Directory* parent, AccessStyle style);

    bool Grow(std::uint64_t size);

    AccessStyle style_;
    RefPointer<ZipStorageVolume> volume_;
    RefPointer<ZipTreeNode> node_;
    ZipFileHeader& member_;  // the node's; a member that is open is never taken from it
    std::uint64_t position_ = 0;
};

}  // namespace ZEMA

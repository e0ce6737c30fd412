// One mounted archive.
#pragma once

#include <cstdint>

#include "core/AString.h"
#include "core/BasicArray.h"
#include "core/RefPointer.h"
#include "storage/Directory.h"
#include "storage/File.h"
#include "storage/zip/ZipFileHeader.h"
#include "storage/zip/ZipRecords.h"
#include "storage/zip/ZipTreeNode.h"

namespace ZEMA {

class ZipStorageDirectory;

// A list through links that stand in the members themselves, so that a member is taken out without a search. Holds no
// references: whoever takes a member out of both orders lets go of it.
template <ZipFileHeader::Links ZipFileHeader::*kLinks>
class ZipMemberOrder {
public:
    ZipFileHeader* First() const { return first_; }
    ZipFileHeader* Last() const { return last_; }
    static ZipFileHeader* Next(const ZipFileHeader* member) { return (member->*kLinks).next; }
    static ZipFileHeader* Previous(const ZipFileHeader* member) { return (member->*kLinks).previous; }

    void PushBack(ZipFileHeader* member) {
        (member->*kLinks) = {last_, nullptr};
        (last_ == nullptr ? first_ : (last_->*kLinks).next) = member;
        last_ = member;
    }

    void Remove(ZipFileHeader* member) {
        const ZipFileHeader::Links links = member->*kLinks;
        (links.previous == nullptr ? first_ : (links.previous->*kLinks).next) = links.next;
        (links.next == nullptr ? last_ : (links.next->*kLinks).previous) = links.previous;
        (member->*kLinks) = {};
    }

private:
    ZipFileHeader* first_ = nullptr;
    ZipFileHeader* last_ = nullptr;
};

// Knows the members of an archive, their names and where everything lies, and edits the archive in place: a member is
// written, added or removed where it stands, and the rest of the file is shifted to make or close room.
//
// Offsets and sizes are bytes from the start of the archive. They are 32 bits wide on disk: an edit that would pass
// that width, or 65,535 entries, fails before anything is changed. So does an edit of a member that overlaps its
// neighbours.
//
// Ownership: held by every directory and open file of the archive. Holds the archive file, the tree and all members.
// Errors:    an edit that fails half way leaves the archive as it then is. Since bytes and bookkeeping may disagree,
//            every later edit is refused; reading goes on.
// Threads:   guarded by StorageMutex.
class ZipStorageVolume : public Object {
public:
    using FileOrder = ZipMemberOrder<&ZipFileHeader::fileOrder>;
    using DirectoryOrder = ZipMemberOrder<&ZipFileHeader::directoryOrder>;

    // `style` is how the archive file was opened.
    ZipStorageVolume(File* archive, AccessStyle style);

    // Reads the central directory and builds the tree; once, before anything else. An empty file becomes an empty
    // archive first. False when it is no archive that can be mounted.
    [[nodiscard]] bool Open();

    bool IsWritable() const { return style_.write != 0; }
    File& Archive() const { return *archive_; }
    ZipTreeNode& RootNode() const { return *rootNode_; }

    // Where the archive is mounted; not kept alive, since it holds the volume.
    ZipStorageDirectory* RootDirectory() const { return rootDirectory_; }
    void SetRootDirectory(ZipStorageDirectory* directory) { rootDirectory_ = directory; }

    // Reads a member's local header and finds its data. False when it disagrees with the central header, or when the
    // member is encrypted or packed by a method that is not supported.
    [[nodiscard]] bool LocateData(ZipFileHeader& member);

    // Adds an empty member under a name that is not taken, or that is a directory without a member when `directory` is
    // set. Null when the name cannot be a member's or when the archive cannot be edited.
    RefPointer<ZipTreeNode> AddMember(ZipTreeNode& parent, const String& name, bool directory);

    // Takes members out of the archive, in one pass over what lies behind them. Each is there once and is not open.
    [[nodiscard]] bool RemoveMembers(BasicArray<RefPointer<ZipFileHeader>>& members);

    // Packs the contents of a changed member and writes them into the archive. False leaves the member dirty.
    [[nodiscard]] bool WriteBack(ZipFileHeader& member);

    // Where the next member will go: behind the last one in file order, or further back where a last one was removed
    // and a gap had been before it. False when the last one's header is needed and cannot be read.
    [[nodiscard]] bool FindAppendPosition(std::uint32_t& position);

    const ZipEndRecord& EndRecord() const { return endRecord_; }
    std::uint64_t CentralHeaderPosition(const ZipFileHeader& member) const {
        return std::uint64_t{endRecord_.directoryOffset} + member.centralHeaderOffset;
    }
    std::uint32_t CentralDirectoryEnd() const { return centralDirectoryEnd_; }
    const FileOrder& MembersInFileOrder() const { return fileOrder_; }
    const DirectoryOrder& MembersInDirectoryOrder() const { return directoryOrder_; }

protected:
    ~ZipStorageVolume() override;

private:
    struct Cut;  // a range of the archive that is to go

    void Link(ZipFileHeader& member);
    void Unlink(ZipFileHeader& member);
    bool ReadLocalHeader(const ZipFileHeader& member, ZipLocalHeader& header) const;

    // Opening.
    bool ReadCentralDirectory();
    void SortFileOrder();

    // Editing. What is called between the first change and the last one leaves the bookkeeping in step with the file
    // only when it succeeds.
    bool CanEdit() const;
    bool LiesApart(const ZipFileHeader& member, std::uint64_t end) const;
    bool RewriteLocalHeaderOffsets(std::uint32_t from);  // of the members at `from` and behind it
    void ShiftDirectory(std::int64_t distance);

    bool InsertMember(ZipFileHeader& member, const AString& localHeader, const AString& centralHeader);

    bool FindCuts(const BasicArray<RefPointer<ZipFileHeader>>& members, BasicArray<Cut>& spans,
                  BasicArray<Cut>& entries) const;
    bool MoveMembersDown(const BasicArray<Cut>& spans);
    bool CloseGaps(const BasicArray<Cut>& cuts);
    void MoveEntriesDown(const BasicArray<Cut>& entries);

    bool ResizeData(ZipFileHeader& member, std::uint32_t size);
    bool ShiftMembersBehind(const ZipFileHeader& member, std::int64_t distance);
    bool DropDescriptor(ZipFileHeader& member);
    bool WriteMethod(ZipFileHeader& member, std::uint16_t method);
    bool WriteSums(ZipFileHeader& member, std::uint32_t crc32);

    RefPointer<File> archive_;
    AccessStyle style_;
    RefPointer<ZipTreeNode> rootNode_;
    ZipStorageDirectory* rootDirectory_ = nullptr;
    FileOrder fileOrder_;
    DirectoryOrder directoryOrder_;  // the volume holds one reference to each member in it
    ZipEndRecord endRecord_;
    std::uint32_t centralDirectoryEnd_ = 0;  // before the end record where the directory ended early
    std::uint32_t appendPosition_ = 0;
    bool appendPositionKnown_ = false;
    bool damaged_ = false;            // an edit failed half way
    bool directoryOverruns_ = false;  // its last entry claims to reach into the end record
};

}  // namespace ZEMA

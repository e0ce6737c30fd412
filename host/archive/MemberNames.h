// The members of an archive by the bytes of their names: every one, whether or not a path leads to it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/BasicArray.h"
#include "core/String.h"
#include "host/archive/ArchiveRecords.h"
#include "storage/zip/ZipStorageVolume.h"

namespace ZEMA {

// Paths are found without regard to case, and of members that share a name a path leads to one. What changes an archive
// must not lose the others, and so works on spellings: the bytes of stored names, without the "/" behind a folder's.
// Members are known by their numbers, which count in the order of the directory.
//
// Ownership: the volume must outlive it.
class MemberNames {
public:
    using Numbers = std::vector<std::uint32_t>;

    // Both were read from the same file and have the same members.
    MemberNames(ArchiveRecords::Pointer records, const ZipStorageVolume& volume);

    const ArchiveRecords::Pointer& Records() const { return records_; }
    std::string_view Name(std::uint32_t number) const { return names_[number]; }
    ArchiveEntry Entry(std::uint32_t number) const { return records_->Entry(number); }
    std::uint32_t NumberOf(const ZipFileHeader& member) const;
    bool IsWritable(std::uint32_t number) const;

    // The members of exactly that spelling as files, in directory order.
    Numbers FilesAt(std::string_view spelling) const;

    // The members of the folder of exactly that spelling, its own among them.
    Numbers Inside(std::string_view spelling) const;

    bool IsThere(std::string_view spelling) const;

    // How what the path leads to is spelled; `bytes` is the path as it was given. A spelling that is there wins over
    // the one that paths lead to, and where nothing is there, the bytes spell what may come to be there.
    std::string SpellingOf(const BasicArray<String>& path, std::string_view bytes) const;

    // How something new at the path is spelled: its own name as it is given.
    std::string NewSpellingOf(const BasicArray<String>& path, std::string_view bytes) const;

    // What only differs from the spelling in its case: the files at the path, and what lies in the folder there. Of
    // members without UTF-8 names nobody can tell.
    Numbers OtherFilesAt(const BasicArray<String>& path, std::string_view spelling) const;
    Numbers OthersInside(const BasicArray<String>& path, std::string_view spelling) const;

    // What lies at the path, or below it, and no path leads to: another member has its name, or it is no name for a
    // file. Folders of which there is another one do not count.
    Numbers Hidden(const BasicArray<String>& path) const;
    Numbers HiddenBelow(const BasicArray<String>& path) const;

    // What lies at the path or below it, and below a file, so that no path goes there.
    Numbers BelowFiles(const BasicArray<String>& path) const;

private:
    Numbers::const_iterator FirstFrom(std::string_view name) const;
    const ZipTreeNode* Find(const BasicArray<String>& path) const;
    Numbers SpelledOtherwise(const BasicArray<String>& path, std::string_view spelling) const;
    std::string SpellingOf(const ZipTreeNode& node, std::size_t depth) const;
    void FindHidden();

    ArchiveRecords::Pointer records_;
    const ZipStorageVolume& volume_;
    std::vector<std::string_view> names_;
    Numbers byName_;                             // sorted by the bytes, and then by the numbers
    std::vector<const ZipFileHeader*> members_;  // by their numbers
    Numbers hidden_;
};

// The members of a node and of all below it.
std::vector<const ZipFileHeader*> MembersBelow(const ZipTreeNode& top);

}  // namespace ZEMA

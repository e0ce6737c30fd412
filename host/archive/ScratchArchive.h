// Packing the contents of new members.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "core/RefPointer.h"
#include "host/archive/PackedData.h"
#include "host/system/Failure.h"
#include "host/system/FileDescriptor.h"
#include "storage/zip/ZipStorageDirectory.h"

namespace ZEMA {

// The bytes of a file: how many came into the buffer, 0 at the end, or why there are none.
using ContentsReader = std::function<Result<std::size_t>(void* buffer, std::size_t size)>;

class ScratchFile;

// Packs files one by one as members of archives that nobody else sees: through the storage tree, as everybody who adds
// to an archive does. Each archive takes a few hundred members, since adding one moves the directory, and the archives
// follow each other in one file, which has no name and goes with this.
class ScratchArchive {
public:
    // The file lies in the folder of `path`.
    explicit ScratchArchive(std::string path);
    ScratchArchive(const ScratchArchive&) = delete;
    ScratchArchive& operator=(const ScratchArchive&) = delete;
    ~ScratchArchive();

    // Holds what the reader gives, and its packed form, in memory until it is written.
    Result<PackedData> Pack(const ContentsReader& read);

    // Has all that was packed in the file.
    Failure Finish();

    int Descriptor() const { return file_.Get(); }  // -1 when nothing was packed

private:
    Failure MakeRoom();
    Failure Fill(File& file, const ContentsReader& read, ContentsSums& sums) const;
    Failure WhyNot() const;

    const std::string path_;
    FileDescriptor file_;
    std::uint64_t start_ = 0;  // of the last archive in the file
    std::uint32_t memberCount_ = 0;
    RefPointer<ScratchFile> archive_;
    RefPointer<ZipStorageDirectory> root_;
    std::unique_ptr<char[]> buffer_;
};

}  // namespace ZEMA

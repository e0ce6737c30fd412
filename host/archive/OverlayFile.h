// A file of the system for the storage classes, with all changes going to a second one.
#pragma once

#include <cstdint>
#include <map>

#include "storage/File.h"

namespace ZEMA {

// Reads as the original with the changes made to it, while the original stays as it is: what is written goes to the
// copy, and only that is in the copy until Complete brings in the rest. So an edit that moves most of a file costs one
// pass over its bytes, not one for the copy and another one for the edit.
//
// Ownership: both descriptors are the caller's, and the original must not change meanwhile.
// Errors:    the first error of the system is kept.
class OverlayFile : public File {
public:
    // Without a copy (-1) the file can only be read. A copy is empty at first.
    OverlayFile(int original, int copy);

    int Error() const { return error_; }  // an errno value, or 0

    // Copies what was not written. From then on the copy alone holds all bytes.
    [[nodiscard]] bool Complete();

    bool ReadAt(std::uint64_t offset, std::uint64_t size, void* buffer, std::uint64_t* done) override;
    bool WriteAt(std::uint64_t offset, std::uint64_t size, const void* buffer, std::uint64_t* done) override;
    bool Read(std::uint64_t size, void* buffer, std::uint64_t* done) override;
    bool Write(std::uint64_t size, const void* buffer, std::uint64_t* done) override;
    std::uint64_t GetSize() override { return size_; }
    bool SetSize(std::uint64_t size) override;
    std::uint64_t GetPosition() override { return position_; }
    bool Seek(std::uint64_t position) override;

protected:
    ~OverlayFile() override;

private:
    bool Note(bool succeeded);
    bool ReadPiece(std::uint64_t offset, std::uint64_t end, char* buffer, std::uint64_t& pieceEnd) const;
    void AddWritten(std::uint64_t begin, std::uint64_t end);
    bool CopyGap(std::uint64_t begin, std::uint64_t end) const;

    int original_;
    int copy_;
    std::uint64_t size_ = 0;
    std::uint64_t originalEnd_ = 0;  // what lies behind it was cut off once, or was never there
    std::uint64_t position_ = 0;
    std::map<std::uint64_t, std::uint64_t> written_;  // begin to end; ranges that neither overlap nor touch
    int error_ = 0;
};

}  // namespace ZEMA

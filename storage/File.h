// An open file of the storage tree.
#pragma once

#include <cstdint>

#include "storage/DirectoryElement.h"

namespace ZEMA {

// A stream of bytes with a position; offsets and sizes are bytes from its start.
//
// The virtual operations are called with StorageMutex held: use the functions below the class instead. A back end
// writes either ReadAt in terms of Seek and Read, or Read in terms of ReadAt at the current position; the same for
// writing. `done`, where not null, receives how many bytes were moved. After a failed read it counts those that came,
// after a failed write it may be 0 although some reached the storage.
class File : public DirectoryElement {
public:
    // Attributes. The base answers "readable", false, and unknown times. SetAttributes sets the times first, since a
    // change of flags may take away the right to set them, and the flags only if that succeeded.
    virtual ElementFlags GetFlags();
    virtual bool SetTimes(const ElementTimes* times);  // a back end may ignore the time of access
    virtual ElementTimes GetTimes();
    virtual bool SetAttributes(const ElementFlags* flags, const ElementTimes* times);

    // Contents; every file has its own. Reading and writing at an offset leave the position behind the bytes moved.
    // True only when exactly `size` bytes were moved.
    virtual bool ReadAt(std::uint64_t offset, std::uint64_t size, void* buffer, std::uint64_t* done) = 0;
    virtual bool WriteAt(std::uint64_t offset, std::uint64_t size, const void* buffer, std::uint64_t* done) = 0;
    virtual bool Read(std::uint64_t size, void* buffer, std::uint64_t* done) = 0;
    virtual bool Write(std::uint64_t size, const void* buffer, std::uint64_t* done) = 0;
    virtual std::uint64_t GetSize() = 0;
    virtual bool SetSize(std::uint64_t size) = 0;  // cuts or extends
    virtual std::uint64_t GetPosition() = 0;
    virtual bool Seek(std::uint64_t position) = 0;  // fails behind the end

protected:
    using DirectoryElement::DirectoryElement;
};

// The one virtual call each, under StorageMutex. Back ends use these on files that are not their own.
std::uint64_t GetSize(File& file);
bool ReadAt(File& file, std::uint64_t offset, std::uint64_t size, void* buffer, std::uint64_t* done = nullptr);
bool WriteAt(File& file, std::uint64_t offset, std::uint64_t size, const void* buffer, std::uint64_t* done = nullptr);
bool Read(File& file, std::uint64_t size, void* buffer, std::uint64_t* done = nullptr);
bool Write(File& file, std::uint64_t size, const void* buffer, std::uint64_t* done = nullptr);
bool SetSize(File& file, std::uint64_t size);
std::uint64_t GetPosition(File& file);
bool Seek(File& file, std::uint64_t position);

// Moves `length` bytes from one offset to another inside the file, overlapping ranges included. A file that ends before
// `to + length` is extended first. False after the first failed step; what was moved until then stays moved.
bool MoveRange(File& file, std::uint64_t from, std::uint64_t to, std::uint64_t length);

}  // namespace ZEMA

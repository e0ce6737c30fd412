// An open file of the local file system.
#pragma once

#include <cstdint>
#include <memory>

#include "platform/Foundation/NSFileHandle.h"
#include "storage/File.h"
#include "storage/local/OpenPathRegistry.h"

namespace ZEMA {

// Reads and writes through a handle of its own, straight from and into the caller's memory; no handle is shared.
//
// While it lives its path cannot be removed through the storage tree. Flags and times go by that path, contents by the
// handle. Extending a file fills it with zeros.
//
// Errors:  a handle's failure to read, write or cut becomes false. A read that fails tells through `done` how far it
//          came; a write that fails tells 0, whatever part of it reached the disk.
class MacOSXFile : public File {
public:
    // `nativePath` is absolute and is where `handle` was opened.
    MacOSXFile(const String& name, Directory* parent, CFStringRef nativePath,
               std::unique_ptr<Foundation::NSFileHandle> handle);

    bool SetFlags(const ElementFlags* flags) override;
    ElementFlags GetFlags() override;
    bool SetTimes(const ElementTimes* times) override;  // ignores the time of access
    ElementTimes GetTimes() override;

    bool ReadAt(std::uint64_t offset, std::uint64_t size, void* buffer, std::uint64_t* done) override;
    bool WriteAt(std::uint64_t offset, std::uint64_t size, const void* buffer, std::uint64_t* done) override;
    bool Read(std::uint64_t size, void* buffer, std::uint64_t* done) override;
    bool Write(std::uint64_t size, const void* buffer, std::uint64_t* done) override;
    std::uint64_t GetSize() override;
    bool SetSize(std::uint64_t size) override;  // a position behind the new end moves to it
    std::uint64_t GetPosition() override;
    bool Seek(std::uint64_t position) override;

protected:
    ~MacOSXFile() override;

private:
    std::unique_ptr<Foundation::NSFileHandle> handle_;
    OpenPathRegistry::Entry path_;  // goes before the handle is closed
};

// A handle at the start of the file, or null. A share bit counts as the access that it grants to others, so that the
// handle can do what any sharer may. A handle that can write is refused for a file whose mode lets nobody write or
// execute it, even to a user whom the mode does not bind.
std::unique_ptr<Foundation::NSFileHandle> FileHandleAtPath(CFStringRef path, AccessStyle style);

}  // namespace ZEMA

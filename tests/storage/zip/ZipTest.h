// What the tests of mounted archives share: an archive in memory that is mounted through a path.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "storage/zip/ZipStorageDirectory.h"
#include "tests/storage/StorageTest.h"
#include "tests/support/ArchiveBuilder.h"

namespace ZEMA::testing {

// The contents of a member; what could not be had is a word in angle brackets, which no test uses as contents.
inline const std::string kNotOpened = "<not opened>";
inline const std::string kNotRead = "<not read>";

std::string Contents(File& file);
std::string ReadMember(Directory& directory, const char* path);
bool WriteMember(Directory& directory, const char* path, std::string_view bytes);  // made or replaced
std::string NamesOf(Directory& directory);                                         // as NamesIn

// A file of nearly any size that holds zeros up to `start` and then the tail, which alone can be written. Logs what
// changes it, as "size 20" and "write 10+5", and its end.
class TailFile : public File {
public:
    TailFile(std::uint64_t start, std::string tail, EventLog& log)
        : File("tail", nullptr), start_(start), tail_(std::move(tail)), log_(log) {}

    const std::string& Tail() const { return tail_; }

    bool ReadAt(std::uint64_t offset, std::uint64_t size, void* buffer, std::uint64_t* done) override;
    bool WriteAt(std::uint64_t offset, std::uint64_t size, const void* buffer, std::uint64_t* done) override;
    bool Read(std::uint64_t, void*, std::uint64_t*) override { return false; }
    bool Write(std::uint64_t, const void*, std::uint64_t*) override { return false; }
    std::uint64_t GetSize() override { return start_ + tail_.size(); }
    bool SetSize(std::uint64_t size) override;
    std::uint64_t GetPosition() override { return 0; }
    bool Seek(std::uint64_t) override { return false; }

protected:
    ~TailFile() override { log_.push_back("end"); }

private:
    std::uint64_t start_;
    std::string tail_;
    EventLog& log_;
};

// "mem" holds archives, which the ZIP factory mounts.
class ZipTest : public StorageTest {
protected:
    ZipTest();

    // Puts an archive there, or replaces it.
    MemoryNode& Put(const char* name, const std::string& bytes);
    const std::string& BytesOf(const char* name) const { return volume.At(name)->bytes; }

    // The root directory of mem/a.wqf, which holds these bytes; null when it cannot be mounted.
    RefPointer<Directory> Mount(const std::string& bytes);
    RefPointer<Directory> Remount();
    const std::string& Archive() const { return BytesOf("a.wqf"); }

    // The archive is flawless, holds just these members under their stored names, and the volume that edited it knows
    // of it what a new one reads.
    void ExpectSound(Directory& top, const std::map<std::string, std::string>& members);

    RefPointer<File> OpenMember(Directory& directory, const char* path, AccessStyle style) {
        return OpenFile(directory, path, &style, false, nullptr);
    }
};

inline ZipStorageVolume& VolumeOf(Directory& directory) {
    return dynamic_cast<ZipStorageDirectory&>(directory).Volume();
}

}  // namespace ZEMA::testing

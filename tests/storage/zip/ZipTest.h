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

inline const std::string kText(30000, 't');  // packs well

std::string Contents(File& file);
std::string ReadMember(Directory& directory, const char* path);
bool WriteMember(Directory& directory, const char* path, std::string_view bytes);  // made or replaced
std::string NamesOf(Directory& directory);                                         // as NamesIn

// "mem" holds archives, which the ZIP factory mounts.
class ZipTest : public StorageTest {
protected:
    ZipTest();

    // Puts an archive there, or replaces it.
    MemoryNode& Put(const char* name, const std::string& bytes);
    const std::string& BytesOf(const char* name) const { return volume.At(name)->bytes; }

    // The root directory of mem/a.wqf, which holds these bytes; null when it cannot be mounted.
    RefPointer<Directory> Mount(const std::string& bytes) { return Put("a.wqf", bytes), Remount(); }
    RefPointer<Directory> Remount() { return Open("mem/a.wqf"); }
    const std::string& Archive() const { return BytesOf("a.wqf"); }

    // The archive is flawless, holds just these members under their stored names, and the volume that edited it knows
    // of it what a new one reads.
    void ExpectSound(Directory& top, const std::map<std::string, std::string>& members);
};

inline RefPointer<File> OpenMember(Directory& directory, const char* path, AccessStyle style) {
    return OpenFile(directory, path, &style, false, nullptr);
}

inline ZipStorageVolume& VolumeOf(Directory& directory) {
    return dynamic_cast<ZipStorageDirectory&>(directory).Volume();
}

inline const ZipFileHeader& FirstMember(Directory& directory) {
    return *VolumeOf(directory).MembersInFileOrder().First();
}

}  // namespace ZEMA::testing

#include "tests/storage/zip/ZipTest.h"

#include "storage/zip/ZipStorageFactory.h"
#include "tests/support/StrictArchive.h"

namespace ZEMA::testing {

std::string Contents(File& file) {
    std::string bytes(GetSize(file), '\0');
    return ReadAt(file, 0, bytes.size(), bytes.data()) ? bytes : kNotRead;
}

std::string ReadMember(Directory& directory, const char* path) {
    const RefPointer<File> file = OpenFile(directory, path, &kReadStyle, false, nullptr);
    return file ? Contents(*file) : kNotOpened;
}

bool WriteMember(Directory& directory, const char* path, std::string_view bytes) {
    const std::uint64_t size = bytes.size();
    const RefPointer<File> file = OpenFile(directory, path, &kReadWriteStyle, true, &size);
    return file && WriteAt(*file, 0, bytes.size(), bytes.data());
}

std::string NamesOf(Directory& directory) {
    Listing listing;
    return List(directory, "*", &listing) ? NamesIn(listing) : kNotRead;
}

ZipTest::ZipTest() {
    EXPECT_TRUE(ObjectFactory::Instance()->Register(&typeid(ZipStorageDirectory), New<ZipStorageFactory>().Get(),
                                                    &typeid(Directory)));
}

MemoryNode& ZipTest::Put(const char* name, const std::string& bytes) {
    MemoryNode& node = *volume.Put(name, "");
    node.zeros = 0;
    node.bytes = bytes;
    return node;
}

namespace {

// All that a volume knows of where things are.
std::vector<std::uint32_t> Bookkeeping(const ZipStorageVolume& volume) {
    const ZipEndRecord& end = volume.EndRecord();
    std::vector<std::uint32_t> all = {end.position, end.entryCount, end.directorySize, end.directoryOffset,
                                      volume.CentralDirectoryEnd()};
    using FileOrder = ZipStorageVolume::FileOrder;
    using DirectoryOrder = ZipStorageVolume::DirectoryOrder;
    for (auto* member = volume.MembersInFileOrder().First(); member; member = FileOrder::Next(member)) {
        all.insert(all.end(), {member->localHeaderOffset, member->centralHeaderOffset, member->flags, member->method,
                               member->crc32, member->compressedSize, member->uncompressedSize, member->archivedSize});
    }
    for (auto* member = volume.MembersInDirectoryOrder().Last(); member; member = DirectoryOrder::Previous(member)) {
        all.push_back(member->centralHeaderOffset);
    }
    return all;
}

}  // namespace

void ZipTest::ExpectSound(Directory& top, const std::map<std::string, std::string>& members) {
    std::map<std::string, std::string> found;
    EXPECT_NO_THROW(found = ReadStrictly(Archive()));
    EXPECT_EQ(found, members);
    const RefPointer<File> file = OpenFile(*mem, "a.wqf", &kReadStyle, false, nullptr);
    const RefPointer<ZipStorageVolume> fresh = New<ZipStorageVolume>(file.Get(), kReadStyle);
    ASSERT_TRUE(fresh->Open());
    EXPECT_EQ(Bookkeeping(VolumeOf(top)), Bookkeeping(*fresh));
    std::uint32_t here = 0;
    std::uint32_t there = 0;
    ASSERT_TRUE(VolumeOf(top).FindAppendPosition(here) && fresh->FindAppendPosition(there));
    EXPECT_GE(here, there) << "behind the last member, or where a later one was";
    EXPECT_LE(here, fresh->EndRecord().directoryOffset);
}

}  // namespace ZEMA::testing

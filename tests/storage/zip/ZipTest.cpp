#include "tests/storage/zip/ZipTest.h"

#include "storage/zip/ZipStorageFactory.h"

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
    node.bytes = bytes;
    return node;
}

RefPointer<Directory> ZipTest::Mount(const std::string& bytes) {
    Put("a.wqf", bytes);
    return Remount();
}

RefPointer<Directory> ZipTest::Remount() {
    return Open("mem/a.wqf");
}

}  // namespace ZEMA::testing

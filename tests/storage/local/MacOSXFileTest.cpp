// Local files, and the factory that mounts them.
#include "storage/local/MacOSXFile.h"

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "storage/local/MacOSXStorageFactory.h"
#include "storage/local/OpenPathRegistry.h"
#include "tests/storage/local/LocalTree.h"

namespace ZEMA {
namespace {

TEST(MacOSXFile, OpensWhatItsStyleAndModeAllow) {
    const struct {
        const char* what;
        AccessStyle style;
        mode_t mode;
        bool opens, reads, writes;
    } rows[] = {
        {"read, share read", {1, 0, 1, 0}, 0644, true, true, false},
        {"read and write", {1, 1, 0, 0}, 0644, true, true, true},
        {"write alone", {0, 1, 0, 0}, 0644, true, false, true},
        {"to share writing is to be able to write", {0, 0, 0, 1}, 0644, true, false, true},
        {"to share reading is to be able to read", {0, 1, 1, 0}, 0644, true, true, true},
        {"nothing", {0, 0, 0, 0}, 0644, false, false, false},
        {"reading what nobody may write", kReadStyle, 0444, true, true, false},
        {"writing what nobody may write or execute, whoever asks", kReadWriteStyle, 0444, false, false, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const LocalTree tree;
        chmod(tree.folder.Write("file", "text").c_str(), row.mode);
        const RefPointer<File> file = tree.OpenFile("file", row.style);
        ASSERT_EQ(static_cast<bool>(file), row.opens);
        if (!file) continue;
        char byte = 'x';
        std::uint64_t done = 99;
        EXPECT_EQ(Read(*file, 1, &byte, &done), row.reads);
        EXPECT_EQ(done, row.reads ? 1u : 0u);
        EXPECT_EQ(WriteAt(*file, 0, 1, "w", &done), row.writes);
        EXPECT_EQ(done, row.writes ? 1u : 0u);
        EXPECT_EQ(Seek(*file, 2) && SetSize(*file, 3), row.writes);
        EXPECT_EQ(GetPosition(*file), 2u) << "where it was, also after a failure";
    }
}

TEST(MacOSXFile, MovesBytesAndKeepsThePositionInside) {
    const LocalTree tree;
    tree.folder.Write("file", "0123456789");
    const RefPointer<File> file = tree.OpenFile("file", kReadWriteStyle);
    // On the heap: behind a buffer on the stack the address space may end within the size that is asked for.
    std::vector<char> buffer(16);
    std::uint64_t done = 99;
    EXPECT_TRUE(Read(*file, 0, buffer.data(), &done));
    EXPECT_EQ(done, 0u);
    EXPECT_TRUE(ReadAt(*file, 7, 2, buffer.data(), nullptr));
    EXPECT_EQ(std::string(buffer.data()), "78");
    EXPECT_FALSE(Read(*file, (std::uint64_t{1} << 32) + 1, buffer.data(), &done))
        << "not one byte of it, nor all 64 bits";
    EXPECT_EQ(done, 1u);
    EXPECT_FALSE(ReadAt(*file, 11, 1, buffer.data(), &done));
    EXPECT_EQ(done, 0u);
    EXPECT_FALSE(WriteAt(*file, 11, 1, "c", &done));

    EXPECT_TRUE(Seek(*file, 10));
    EXPECT_FALSE(Seek(*file, 11));
    const std::uint64_t rows[][3] = {{8, 9, 8}, {8, 8, 8}, {8, 5, 5}, {5, 20, 5}};
    for (const auto& [position, size, after] : rows) {
        EXPECT_TRUE(Seek(*file, position) && SetSize(*file, size)) << size;
        EXPECT_EQ(GetPosition(*file), after) << size;
    }
    EXPECT_FALSE(SetSize(*file, std::uint64_t{1} << 63));
    EXPECT_EQ(tree.folder.Read("file"), std::string("01234") + std::string(15, '\0'));
    const std::uint64_t size = 4;
    EXPECT_EQ(tree.directory->OpenFile("file", &kReadStyle, false, &size), nullptr) << "it cannot be cut";
    EXPECT_EQ(GetSize(*tree.OpenFile("file", kReadStyle, true)), 20u) << "it is there: nothing to create";
    const RefPointer<File> cut(tree.directory->OpenFile("file", &kReadWriteStyle, false, &size));
    EXPECT_EQ(GetSize(*cut), 4u);
    EXPECT_EQ(GetPosition(*cut), 0u);
}

TEST(MacOSXStorageFactory, MountsTheFileSystemOnceWhileItIsAttached) {
    LocalTree tree;
    tree.folder.Write("file", "");
    const String path = Name(tree.folder / "file");
    RefPointer<File> file = tree.OpenFile("file", kReadStyle);
    const RefPointer<MacOSXStorageFactory> second = New<MacOSXStorageFactory>();
    EXPECT_EQ(GetFullPath(*file, true), Name("file" + tree.folder / "file"));
    EXPECT_FALSE(second->Attach());
    EXPECT_EQ(OpenPathRegistry::Count(path), 1u) << "what is open stays counted";

    tree.factory->Detach();
    EXPECT_TRUE(tree.Open("")) << "the file still holds the volume";
    file.Reset();
    tree.directory.Reset();
    EXPECT_FALSE(tree.Open(""));

    auto before = std::make_unique<OpenPathRegistry::Entry>(path.CFString());
    EXPECT_TRUE(second->Attach());
    EXPECT_TRUE(tree.Open(""));
    EXPECT_EQ(OpenPathRegistry::Count(path), 0u) << "a new volume starts with none";
    const OpenPathRegistry::Entry after(path.CFString());
    before.reset();
    EXPECT_EQ(OpenPathRegistry::Count(path), 1u) << "what was forgotten takes nothing away";
}

// Holds a file, and with it the whole chain up to the root, for as long as the registry holds the object.
struct Keeper : Object {
    RefPointer<File> file;
};

[[noreturn]] void EndWithEverythingRegistered(unsigned long key, const std::string& path) {
    RefPointer<MacOSXStorageFactory> factory = New<MacOSXStorageFactory>();
    bool ready = ObjectFactory::Instance()->Register(&typeid(MacOSXDirectory), factory.Get(), &typeid(Directory));
    RefPointer<Keeper> keeper = New<Keeper>();
    keeper->file = OpenFile(*GetRootDirectory(), Name("file" + path), &kReadStyle, false, nullptr);
    ready = ready && keeper->file && ObjectRegistry::Instance()->Register(key, keeper.Get());
    factory.Reset();
    keeper.Reset();
    std::exit(ready ? 0 : 1);
}

TEST(MacOSXStorageFactory, AProgramMayEndWithEverythingRegistered) {
    const testing::TemporaryFolder folder;
    const std::string path = folder.Write("file", "");
    // Before the factory and the root in the order of the registry, and after them.
    for (const unsigned long key : {0x30303030ul, 0x7A7A7A7Aul}) {
        EXPECT_EXIT(EndWithEverythingRegistered(key, path), ::testing::ExitedWithCode(0), "");
    }
}

}  // namespace
}  // namespace ZEMA

#include "storage/local/MacOSXStorageFactory.h"

#include <cstdlib>
#include <memory>

#include "storage/local/OpenPathRegistry.h"
#include "tests/storage/local/LocalTree.h"

namespace ZEMA {
namespace {

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

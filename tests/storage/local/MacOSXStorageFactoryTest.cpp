#include "storage/local/MacOSXStorageFactory.h"

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

}  // namespace
}  // namespace ZEMA

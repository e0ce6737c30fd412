#include <string>

#include "StorageTest.h"

namespace ZEMA::testing {
namespace {

class DirectoryCopy : public StorageTest {
protected:
    DirectoryCopy() {
        volume.Put("src/f", "text")->times = {1, 2, 3};
        volume.Put("src/sub/g", "more");
        volume.Put("dst/old", "old contents");
        volume.Put("x.wqf", "archive");
        volume.At("src/sub")->times = {4, 5, 6};
    }

    bool Copy(const char* name, const char* target, const char* newName, bool overwrite = false, bool force = false) {
        volume.log.clear();
        const RefPointer<Directory> directory = Open(target);
        return mem->Copy(name, directory.Get(), newName, overwrite, force);
    }
    std::string BytesAt(const char* path) { return volume.At(path) != nullptr ? volume.At(path)->bytes : "nothing"; }
};

constexpr int kProtected = ElementFlags::kReadable;

TEST_F(DirectoryCopy, CopiesAFileWithItsAttributes) {
    volume.At("src/f")->flags.bits = ElementFlags::kReadable | ElementFlags::kExecutable;
    const RefPointer<Directory> source = Open("mem/src");
    EXPECT_TRUE(source->Copy("F", Open("mem/dst").Get(), "g", false, false));
    EXPECT_EQ(BytesAt("dst/g"), "text");
    EXPECT_EQ(volume.At("dst/g")->flags, volume.At("src/f")->flags);
    EXPECT_EQ(volume.At("dst/g")->times, volume.At("src/f")->times);
    // The times first: the flags may take away the right to set them.
    EXPECT_EQ(volume.log, EventLog({"read F", "write g", "times g", "flags g"}));
}

TEST_F(DirectoryCopy, CutsFilesIntoChunks) {
    constexpr std::size_t kChunk = 0x100000;
    for (const std::size_t size : {std::size_t{0}, kChunk, 2 * kChunk + 1}) {
        std::string bytes(size, 'x');
        if (size > 0) bytes.front() = bytes.back() = 'y';
        volume.Put("big", "")->bytes = bytes;
        volume.operations = 0;
        EXPECT_TRUE(Copy("big", "mem/dst", "big", true));
        EXPECT_TRUE(BytesAt("dst/big") == bytes);
        EXPECT_EQ(volume.operations, static_cast<int>(2 * ((size + kChunk - 1) / kChunk)));
    }
}

TEST_F(DirectoryCopy, AsksBeforeItOverwritesAndForces) {
    const struct {
        const char* what;
        bool isProtected, overwrite, force;
        EventLog log;  // behind "read new"
    } rows[] = {
        {"not over another file", false, false, true, {}},
        {"over another file", false, true, false, {"write old", "times old", "flags old"}},
        {"not over a protected one", true, true, false, {"write old"}},
        {"unless forced", true, true, true, {"write old", "unprotect old", "write old", "times old", "flags old"}},
    };
    volume.Put("new", "new");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        volume.Put("dst/old", "old contents");
        if (row.isProtected) volume.At("dst/old")->flags.bits = kProtected;
        const bool copies = row.log.size() > 1;
        EXPECT_EQ(Copy("new", "mem/dst", "old", row.overwrite, row.force), copies);
        EXPECT_EQ(BytesAt("dst/old"), copies ? "new" : "old contents");
        volume.log.erase(volume.log.begin());
        EXPECT_EQ(volume.log, row.log);
    }
}

// Lifting the protection may not help; then it is put back.
TEST_F(DirectoryCopy, ProtectsAgainWhatItCannotOpen) {
    class Stubborn : public MemoryDirectory {
    public:
        using MemoryDirectory::MemoryDirectory;
        File* OpenFile(const String&, const AccessStyle*, bool, const std::uint64_t*) override { return nullptr; }

    protected:
        ~Stubborn() override = default;
    };
    const RefPointer<Directory> target = New<Stubborn>("stubborn", root.Get(), volume, *volume.At("dst"));
    EXPECT_FALSE(mem->Copy("x.wqf", target.Get(), "old", true, true));
    EXPECT_EQ(volume.log, EventLog({"read x.wqf"}));  // it is not protected: nothing to lift
    volume.log.clear();
    volume.At("dst/old")->flags.bits = kProtected;
    EXPECT_FALSE(mem->Copy("x.wqf", target.Get(), "old", true, true));
    EXPECT_EQ(volume.log, EventLog({"read x.wqf", "unprotect old", "protect old"}));
    EXPECT_EQ(volume.At("dst/old")->flags.bits, kProtected);
}

TEST_F(DirectoryCopy, CopiesDirectoriesWithWhatIsBelow) {
    volume.Put("src/empty", nullptr);
    EXPECT_TRUE(Copy("src", "mem/dst", "new"));
    EXPECT_EQ(BytesAt("dst/new/f"), "text");
    EXPECT_EQ(BytesAt("dst/new/sub/g"), "more");
    EXPECT_EQ(volume.At("dst/new/sub")->times, volume.At("src/sub")->times);
    EXPECT_TRUE(volume.At("dst/new/empty"));

    volume.At("src/f")->bytes = "changed";
    EXPECT_FALSE(Copy("src", "mem/dst", "new"));  // the file is there already
    EXPECT_TRUE(Copy("src", "mem/dst", "new", true));
    EXPECT_EQ(BytesAt("dst/new/f"), "changed");
    EXPECT_FALSE(Copy("missing", "mem/dst", "m"));
}

TEST_F(DirectoryCopy, StopsAtTheFirstFailureAndLeavesTheRest) {
    // Two files, a reading and a writing each.
    for (int failing = 1; failing <= 4; ++failing) {
        volume.operations = 0;
        volume.failAt = failing;
        EXPECT_FALSE(Copy("src", "mem", "copy", true));
        EXPECT_EQ(volume.operations, failing);
        EXPECT_TRUE(volume.At("copy/f"));
        EXPECT_EQ(volume.At("copy/sub") != nullptr, failing > 2);
    }
}

TEST_F(DirectoryCopy, RefusesToCopyOntoOrIntoItself) {
    const struct {
        const char* what;
        const char* name;
        const char* target;
        const char* newName;
    } rows[] = {
        {"a file onto itself", "x.wqf", "mem", "x.wqf"},
        {"a file onto itself in other letters", "x.wqf", "mem", "X.WQF"},
        {"a file onto itself by a detour", "x.wqf", "mem/src", "../x.wqf"},
        {"a directory onto itself", "src", "mem", "SRC"},
        {"a directory into itself", "src", "mem/src", "new"},
        {"a directory into one of its own", "src", "mem/src/sub", "new"},
        {"a directory into itself by a detour", "src", "mem", "src/new"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const RefPointer<Directory> target = Open(row.target);
        EXPECT_FALSE(mem->Move(row.name, target.Get(), row.newName, true, true));
    }
    EXPECT_EQ(BytesAt("x.wqf"), "archive");
    EXPECT_EQ(BytesAt("src/f"), "text");
    EXPECT_TRUE(Copy("x.wqf", "mem/src", "x.wqf"));  // the same name elsewhere is another file
}

// An archive may hold a member named "..": followed as a path it would lead out of the target.
TEST_F(DirectoryCopy, RefusesEntriesThatNoPathLeadsTo) {
    for (const char* name : {"..", ".", "", "a/b"}) {
        volume.top->children["odd"] = volume.NewNode(ElementFlags::kDirectory);
        volume.At("odd")->children[name] = volume.NewNode(ElementFlags::kDirectory);
        EXPECT_FALSE(Copy("odd", "mem/dst", "odd")) << name;
    }
    EXPECT_EQ(volume.At("dst/src"), nullptr);
}

TEST_F(DirectoryCopy, MovesByCopyingAndRemoving) {
    const RefPointer<Directory> dst = Open("mem/dst");
    volume.log.clear();
    EXPECT_TRUE(mem->Move("x.wqf", dst.Get(), "y.wqf", false, false));
    EXPECT_EQ(volume.log.back(), "remove with force x.wqf");
    EXPECT_EQ(BytesAt("dst/y.wqf") + BytesAt("x.wqf"), "archivenothing");

    volume.failAt = volume.operations + 1;
    EXPECT_FALSE(dst->Move("y.wqf", mem.Get(), "x.wqf", false, false));
    EXPECT_EQ(BytesAt("dst/y.wqf"), "archive");  // not removed after a failed copy
    EXPECT_TRUE(dst->Rename("y.wqf", "z.wqf"));
    EXPECT_FALSE(dst->Rename("z.wqf", "old"));
    EXPECT_EQ(BytesAt("dst/z.wqf"), "archive");
}

// The storage decides how deep a copy goes.
TEST_F(DirectoryCopy, CopiesDeepDirectories) {
    constexpr int kDepth = 10000;
    MemoryNode* deepest = volume.Put("deep", nullptr);
    for (int depth = 0; depth < kDepth; ++depth) {
        MemoryNode* const below = volume.NewNode(ElementFlags::kDirectory);
        deepest->children["d"] = below;
        deepest = below;
    }
    EXPECT_TRUE(Copy("deep", "mem/dst", "deep"));
    int depth = 0;
    for (MemoryNode* node = volume.At("dst/deep"); !node->children.Empty(); node = node->children["d"]) ++depth;
    EXPECT_EQ(depth, kDepth);
}

}  // namespace
}  // namespace ZEMA::testing

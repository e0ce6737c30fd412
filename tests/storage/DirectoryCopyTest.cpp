// The generic copy, and moving by it.
#include "tests/storage/StorageTest.h"

namespace ZEMA::testing {
namespace {

class DirectoryCopy : public StorageTest {
protected:
    DirectoryCopy() {
        volume.Put("src/f", text_.c_str())->times = {1, 2, 3};
        volume.Put("src/sub/g", "more");
        volume.Put("src/empty", nullptr);
        volume.Put("dst/old", "old contents");
        volume.Put("x.wqf", "archive");
        volume.At("src/sub")->times = {4, 5, 6};
    }

    bool Copy(const char* name, const char* target, const char* newName, bool overwrite = false, bool force = false) {
        volume.log.clear();
        return mem->Copy(name, Open(target).Get(), newName, overwrite, force);
    }
    std::string BytesAt(const char* path) { return volume.At(path) != nullptr ? volume.At(path)->bytes : "nothing"; }

    const std::string text_ = std::string(0x100000, 'x') + "y";  // one chunk and a byte
};

TEST_F(DirectoryCopy, AsksBeforeItOverwritesAndForces) {
    const EventLog written = {"write old", "times old", "flags old"};  // the flags may take away the right to set times
    const EventLog forced = {"write old", "unprotect old", "write old", "times old", "flags old"};
    const EventLog inVain = {"write old", "unprotect old", "write old", "protect old"};
    const struct {
        const char* what;
        bool isProtected, overwrite, force, refuses;
        EventLog log;  // behind "read x.wqf"
    } rows[] = {
        {"not over another file", false, false, true, false, {}},
        {"over another file", false, true, false, false, written},
        {"not over a protected one", true, true, false, false, {"write old"}},
        {"unless forced", true, true, true, false, forced},
        {"protected again where that does not help", true, true, true, true, inVain},
        {"nothing to lift", false, true, true, true, {"write old"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        MemoryNode& old = *volume.Put("dst/old", "old contents");
        if (row.isProtected) old.flags.bits = ElementFlags::kReadable;
        volume.refused = row.refuses ? "write" : "";
        const bool copies = row.log.size() > 1 && !row.refuses;
        EXPECT_EQ(Copy("x.wqf", "mem/dst", "old", row.overwrite, row.force), copies);
        EXPECT_EQ(old.bytes, copies ? "archive" : "old contents");
        volume.log.erase(volume.log.begin());
        EXPECT_EQ(volume.log, row.log);
    }
}

TEST_F(DirectoryCopy, CopiesDirectoriesWithWhatIsBelow) {
    volume.At("src/f")->flags.bits = ElementFlags::kReadable | ElementFlags::kExecutable;
    EXPECT_TRUE(Copy("src", "mem/dst", "new"));
    EXPECT_EQ(BytesAt("dst/new/f") + BytesAt("dst/new/sub/g"), text_ + "more");
    EXPECT_EQ(volume.At("dst/new/f")->flags, volume.At("src/f")->flags);
    EXPECT_EQ(volume.At("dst/new/f")->times, volume.At("src/f")->times);
    EXPECT_EQ(volume.At("dst/new/sub")->times, volume.At("src/sub")->times);
    EXPECT_TRUE(volume.At("dst/new/empty"));
    EXPECT_FALSE(Copy("src", "mem/dst", "new"));  // the file is there already
    EXPECT_FALSE(Copy("missing", "mem/dst", "m"));
}

TEST_F(DirectoryCopy, StopsAtTheFirstFailureAndLeavesTheRest) {
    // A reading and a writing for each of three chunks, of which the first two are one file's.
    for (volume.failAt = 1; volume.failAt <= 6; ++volume.failAt) {
        volume.operations = 0;
        EXPECT_FALSE(Copy("src", "mem", "copy", true));
        EXPECT_EQ(volume.operations, volume.failAt);
        EXPECT_TRUE(volume.At("copy/f"));
        EXPECT_EQ(volume.At("copy/sub") != nullptr, volume.failAt > 4);
    }
}

// A storage that lists an entry named "..": followed as a path it would lead out of the target.
TEST_F(DirectoryCopy, RefusesEntriesThatNoPathLeadsTo) {
    for (const char* name : {"..", ".", "", "a/b"}) {
        volume.top->children["odd"] = volume.NewNode(ElementFlags::kDirectory);
        volume.At("odd")->children[name] = volume.NewNode(ElementFlags::kDirectory);
        EXPECT_FALSE(Copy("odd", "mem/dst", "odd")) << name;
    }
    EXPECT_EQ(volume.At("dst/src"), nullptr);
}

// The storage decides how deep a copy goes.
TEST_F(DirectoryCopy, CopiesDeepDirectories) {
    constexpr int kDepth = 10000;
    MemoryNode* deepest = volume.Put("deep", nullptr);
    for (int depth = 0; depth < kDepth; ++depth) {
        deepest = deepest->children["d"] = volume.NewNode(ElementFlags::kDirectory);
    }
    EXPECT_TRUE(Copy("deep", "mem/dst", "deep"));
    int depth = 0;
    for (MemoryNode* node = volume.At("dst/deep"); !node->children.Empty(); node = node->children["d"]) ++depth;
    EXPECT_EQ(depth, kDepth);
}

}  // namespace
}  // namespace ZEMA::testing

// Following paths: through what is open, through the storage, into archives.
#include <algorithm>

#include "storage/RootDirectory.h"
#include "tests/storage/StorageTest.h"

namespace ZEMA::testing {
namespace {

class DirectoryResolve : public StorageTest {
protected:
    DirectoryResolve() {
        volume.Put("a/b/f", "text");
        volume.Put("a/doc.wqf", "archive");
        archive.Put("models/deep/f", "inside");
    }

    void RegisterArchives() { Register<MemoryVolume>("zip", FactoryRank::Selective, MountArchives(archive)); }
    std::ptrdiff_t Mounts() const { return std::count(archive.log.begin(), archive.log.end(), "mount doc.wqf"); }
};

TEST_F(DirectoryResolve, FollowsPathsThroughWhatIsOpen) {
    RefPointer<Directory> b = Open("mem/a/b");
    EXPECT_EQ(OpenDirectory(*b, "../../../mem", false), mem);
    EXPECT_EQ(Open("MEM/A/B"), b);
    BasicArray<String> components;
    SplitPath("a/b/../c", components);
    EXPECT_EQ(FindOpenDirectory(*mem, components), GetParent(*b));  // as the components stand
    EXPECT_EQ(Bytes(components), "c");
    b.Reset();
    EXPECT_TRUE(mem->GetOpenChildren().Empty());  // the chain has gone with it
}

TEST_F(DirectoryResolve, AsksFromTheWholePathDownAndSelectiveFactoriesFirst) {
    const auto refuse = [](const Directory::OpenArgs&) -> Object* { return nullptr; };
    // Registered the other way round; asked by rank.
    Register<RootDirectory>("local", FactoryRank::General, refuse);
    Register<MemoryVolume>("zip", FactoryRank::Selective, refuse);
    EXPECT_EQ(Open("mem/x/y"), nullptr);
    EXPECT_EQ(asked, EventLog({"zip: mem > x/y", "local: mem > x/y", "zip: mem > x", "local: mem > x"}));
}

TEST_F(DirectoryResolve, MountsWhatTheDirectoryRunsInto) {
    RegisterArchives();
    RefPointer<Directory> deep = Open("mem/a/doc.wqf/models/deep");
    EXPECT_EQ(PathOf(deep), "mem/a/doc.wqf/models/deep");
    EXPECT_EQ(Mounts(), 1);  // although the longer paths were asked for, and led through it, before

    // As long as it is held the factories are not asked, under either name.
    asked.clear();
    EXPECT_EQ(Open("mem/a/DOC.wqf/models/deep"), deep);
    EXPECT_EQ(Open("mem/a/doc.wqf.zip/models/deep"), deep);
    EXPECT_TRUE(asked.empty());

    deep.Reset();
    EXPECT_TRUE(Open("mem/a/doc.wqf"));
    EXPECT_EQ(Mounts(), 2);
}

// Read literally, the mounting rule makes the calls double with every missing component.
TEST_F(DirectoryResolve, PutsEachQuestionOnceAndNestsThemNotTooDeep) {
    int nesting = 0;
    Register<MemoryVolume>("zip", FactoryRank::Selective, [&](const Directory::OpenArgs& question) {
        EXPECT_LE(++nesting, 100);
        Object* const answer = MountArchives(archive)(question);
        --nesting;
        return answer;
    });
    for (const std::string front : {"mem", "mem/a/doc.wqf"}) {
        SCOPED_TRACE(front);
        asked.clear();
        archive.log.clear();
        std::string path = front;
        for (int count = 0; count < 300; ++count) path += "/m";
        EXPECT_FALSE(Open(path.c_str()));
        EXPECT_LE(asked.size(), front == "mem" ? 300u : 604u);  // those in front of the archive, and those inside it
        EXPECT_LE(Mounts(), 1);
        std::sort(asked.begin(), asked.end());
        EXPECT_EQ(std::unique(asked.begin(), asked.end()), asked.end());
    }
}

TEST_F(DirectoryResolve, EndsWhenAFactoryAsksItsOwnQuestion) {
    Register<MemoryVolume>("echo", FactoryRank::Selective, [](const Directory::OpenArgs& question) -> Object* {
        EXPECT_FALSE(OpenDirectory(*question.base, question.components, false));
        return nullptr;
    });
    EXPECT_FALSE(Open("mem/x/y"));
    EXPECT_EQ(asked, EventLog({"echo: mem > x/y", "echo: mem > x"}));
}

TEST_F(DirectoryResolve, SeesAnArchiveThatIsMadeOnTheWay) {
    RegisterArchives();
    // Asked second, and only for the whole path: by then the archive factory has refused "late" once.
    Register<RootDirectory>("maker", FactoryRank::General, [](const Directory::OpenArgs& question) -> Object* {
        if (question.components.Size() != 2) return nullptr;
        const RefPointer<File> file = OpenFile(*question.base, "late.zip", &kReadWriteStyle, true, nullptr);
        EXPECT_TRUE(Write(*file, 7, "archive"));
        return nullptr;
    });
    EXPECT_TRUE(Open("mem/late/models"));
}

}  // namespace
}  // namespace ZEMA::testing

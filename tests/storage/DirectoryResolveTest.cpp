#include <algorithm>
#include <string>

#include "StorageTest.h"
#include "storage/RootDirectory.h"

namespace ZEMA::testing {
namespace {

class DirectoryResolve : public StorageTest {
protected:
    DirectoryResolve() {
        volume.Put("a/b/f", "text");
        volume.Put("a/doc.wqf", "archive");
        archive.Put("models/deep/f", "inside");
    }

    void RegisterArchives() { Register<MemoryDirectory>("zip", FactoryRank::Selective, MountArchives(archive)); }
    int Mounts() const { return static_cast<int>(std::count(archive.log.begin(), archive.log.end(), "mount doc.wqf")); }
};

// Something else than a directory.
struct Stray : Object {
    Stray() { ++alive; }
    ~Stray() override { --alive; }
    static inline int alive = 0;
};

Object* Refuse(const Directory::OpenArgs&) {
    return nullptr;
}

TEST_F(DirectoryResolve, FollowsPaths) {
    const struct {
        const char* what;
        const char* path;
        const char* found;  // null where the path leads nowhere
    } rows[] = {
        {"no component is the directory itself", "", ""},
        {"dots are resolved before anything is opened", "mem/missing/./../a", "mem/a"},
        {"a directory of the storage, case kept as asked for", "MEM/A/b", "mem/A/b"},
        {"a file is no directory", "mem/a/b/f", nullptr},
        {"nothing stands above the root", "..", nullptr},
        {"a leading slash is an empty component", "/mem", nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const RefPointer<Directory> found = Open(row.path);
        ASSERT_EQ(found != nullptr, row.found != nullptr);
        if (!found) continue;
        EXPECT_EQ(Bytes(GetFullPath(*found, true)), row.found);
    }
    const RefPointer<Directory> b = Open("mem/a/b");
    EXPECT_EQ(OpenDirectory(*b, "../../../mem", false), mem);
    EXPECT_EQ(Bytes(GetFullPath(*b, false)), "b");
    EXPECT_EQ(GetParent(*root), nullptr);
}

TEST_F(DirectoryResolve, GivesTheSameObjectWhileItLives) {
    RefPointer<Directory> first = Open("mem/a/b");
    EXPECT_EQ(Open("MEM/A/B"), first);
    first.Reset();
    EXPECT_TRUE(mem->GetOpenChildren().Empty());  // the chain has gone with it
}

TEST_F(DirectoryResolve, WalksOpenDirectoriesAlone) {
    const RefPointer<Directory> a = Open("mem/a");
    BasicArray<String> components;
    SplitPath("a/b/../c", components);
    EXPECT_EQ(FindOpenDirectory(*mem, components), a);
    EXPECT_EQ(Bytes(components), "b/../c");
    SplitPath("../../..", components);
    EXPECT_EQ(FindOpenDirectory(*a, components), nullptr);
}

TEST_F(DirectoryResolve, AsksFromTheWholePathDownAndSelectiveFactoriesFirst) {
    // Registered the other way round; asked by rank.
    Register<RootDirectory>("local", FactoryRank::General, Refuse);
    Register<MemoryDirectory>("zip", FactoryRank::Selective, Refuse);
    EXPECT_EQ(Open("mem/x/y"), nullptr);
    EXPECT_EQ(asked, EventLog({"zip: mem > x/y", "local: mem > x/y", "zip: mem > x", "local: mem > x"}));
}

TEST_F(DirectoryResolve, MountsWhatTheDirectoryRunsInto) {
    RegisterArchives();
    RefPointer<Directory> deep = Open("mem/a/doc.wqf/models/deep");
    ASSERT_TRUE(deep);
    EXPECT_EQ(Bytes(GetFullPath(*deep, true)), "mem/a/doc.wqf/models/deep");
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
    Register<MemoryDirectory>("zip", FactoryRank::Selective, [&](const Directory::OpenArgs& question) {
        EXPECT_LE(++nesting, 100);
        Object* const answer = MountArchives(archive)(question);
        --nesting;
        return answer;
    });
    const struct {
        const char* front;
        int missing;
        std::size_t questions;  // at most
    } rows[] = {
        {"mem", 20, 20},
        {"mem/a/doc.wqf", 20, 44},  // those in front of the archive, and those inside it
        {"mem/a/doc.wqf", 300, 604},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.front);
        asked.clear();
        archive.log.clear();
        String path(row.front);
        for (int count = 0; count < row.missing; ++count) path.Append("/m");
        EXPECT_FALSE(OpenDirectory(*root, path, false));
        EXPECT_LE(asked.size(), row.questions);
        EXPECT_LE(Mounts(), 1);
        std::sort(asked.begin(), asked.end());
        EXPECT_EQ(std::unique(asked.begin(), asked.end()), asked.end());
    }
}

TEST_F(DirectoryResolve, EndsWhenAFactoryAsksItsOwnQuestion) {
    Register<MemoryDirectory>("echo", FactoryRank::Selective, [](const Directory::OpenArgs& question) -> Object* {
        EXPECT_FALSE(OpenDirectory(*question.base, question.components, false));
        return nullptr;
    });
    EXPECT_FALSE(Open("mem/x/y"));
    EXPECT_EQ(asked, EventLog({"echo: mem > x/y", "echo: mem > x"}));
}

TEST_F(DirectoryResolve, TakesOnlyDirectoriesForAnAnswer) {
    Register<MemoryDirectory>("odd", FactoryRank::Selective,
                              [](const Directory::OpenArgs&) -> Object* { return new Stray; });
    EXPECT_FALSE(Open("mem/x"));
    EXPECT_EQ(Stray::alive, 0);
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

TEST_F(DirectoryResolve, MakesWhatIsMissing) {
    EXPECT_TRUE(Open("mem/a/new", true));
    EXPECT_EQ(volume.log, EventLog({"make new"}));

    RegisterArchives();
    volume.Put("p", nullptr);
    volume.Put("p.zip", "archive");
    const struct {
        const char* what;
        const char* path;
        MemoryVolume& where;
        const char* made;  // null where it fails
    } rows[] = {
        {"below the deepest directory that exists", "mem/a/other/deep", volume, "a/other/deep"},
        {"in an archive", "mem/a/doc.wqf/models/new/deep", archive, "models/new/deep"},
        {"in a directory that an archive's name hides behind", "mem/p/q", volume, "p/q"},
        {"not below a file", "mem/a/b/f/new", volume, nullptr},
        {"not below the root, which has no storage", "new", volume, nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const RefPointer<Directory> found = Open(row.path, true);
        ASSERT_EQ(found != nullptr, row.made != nullptr);
        if (!found) continue;
        EXPECT_TRUE(row.where.At(row.made));
        EXPECT_EQ(Open(row.path), found);
    }
}

}  // namespace
}  // namespace ZEMA::testing

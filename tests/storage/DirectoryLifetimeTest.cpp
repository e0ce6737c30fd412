#include <atomic>
#include <cstdlib>
#include <thread>

#include "StorageTest.h"

namespace ZEMA::testing {
namespace {

class DirectoryLifetime : public StorageTest {};

TEST_F(DirectoryLifetime, ErasesOnlyItsOwnEntries) {
    RefPointer<Directory> older = New<Directory>("d", mem.Get());
    AddAlias(*older, "other");
    const RefPointer<Directory> newer = New<Directory>("D", mem.Get());
    EXPECT_EQ(Open("mem/d"), newer);
    EXPECT_EQ(Open("mem/OTHER"), older);
    older.Reset();
    EXPECT_EQ(Open("mem/d"), newer);
    EXPECT_FALSE(Open("mem/other"));
}

TEST_F(DirectoryLifetime, FilesKeepTheirDirectories) {
    volume.Put("a/b/f", "text");
    RefPointer<File> file = OpenFile(*root, "mem/a/b/f", &kReadStyle, false, nullptr);
    EXPECT_EQ(Open("mem/a/b"), GetParent(*file));
    file.Reset();
    EXPECT_TRUE(mem->GetOpenChildren().Empty());
}

// One directory keeps the next: a release that went from destructor to destructor would exhaust the stack.
TEST_F(DirectoryLifetime, LetsGoOfDeepChains) {
    constexpr int kDepth = 100000;
    RefPointer<Directory> deepest = mem;
    RefPointer<Directory> middle;
    for (int depth = 0; depth < kDepth; ++depth) {
        deepest = New<Directory>("d", deepest.Get());
        if (depth == kDepth / 2) middle = deepest;
    }
    EXPECT_EQ(GetFullPath(*deepest, true).Length(), 3u + 2u * kDepth);
    deepest.Reset();
    EXPECT_TRUE(middle->GetOpenChildren().Empty());  // those above are held by this one
    EXPECT_FALSE(mem->GetOpenChildren().Empty());
    middle.Reset();
    EXPECT_TRUE(mem->GetOpenChildren().Empty());
}

// A directory that is let go of here while it is looked up there is either found whole or not at all.
TEST_F(DirectoryLifetime, ReleasesAndFindsFromTwoThreads) {
    volume.Put("a/b", nullptr);
    std::atomic<int> missed{0};
    const auto resolve = [&] {
        for (int round = 0; round < 3000; ++round) {
            const RefPointer<Directory> found = OpenDirectory(*mem, "a/b", false);
            if (!found || GetParent(*found) == nullptr) ++missed;
        }
    };
    std::thread other(resolve);
    resolve();
    other.join();
    EXPECT_EQ(missed, 0);
    EXPECT_TRUE(mem->GetOpenChildren().Empty());
}

TEST_F(DirectoryLifetime, SurvivesItsRegistry) {
    ObjectRegistry::Instance()->RemoveAll();
    EXPECT_EQ(Bytes(GetFullPath(*mem, true)), "mem");
    EXPECT_FALSE(OpenDirectory(*GetRootDirectory(), "mem", false));  // a new, empty root
}

TEST(DirectoryLifetimeAtExit, LeavesAFullRegistryBehind) {
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            static MemoryVolume kept;  // outlives what stands in it
            const RefPointer<Directory> mounted =
                New<MemoryDirectory>("mem", GetRootDirectory().Get(), kept, *kept.top);
            class Holder : public SpecificObjectFactory {
            public:
                explicit Holder(Directory* held) : held_(held) {}
                Object* Create(ObjectFactoryArgs*) override { return nullptr; }

            private:
                RefPointer<Directory> held_;
            };
            const auto holder = New<Holder>(mounted.Get());
            if (!ObjectFactory::Instance()->Register(&typeid(Holder), holder.Get(), &typeid(Directory))) std::exit(1);
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace ZEMA::testing

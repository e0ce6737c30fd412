#include <atomic>
#include <new>
#include <thread>

#include "StorageTest.h"

namespace ZEMA::testing {
namespace {

using DirectoryLifetime = StorageTest;

TEST_F(DirectoryLifetime, ErasesOnlyItsOwnEntries) {
    RefPointer<Directory> older = New<Directory>("d", mem.Get());
    AddAlias(*older, "other");
    const RefPointer<Directory> newer = New<Directory>("D", mem.Get());
    EXPECT_EQ(Open("mem/OTHER"), older);
    older.Reset();
    EXPECT_EQ(Open("mem/d"), newer);
    EXPECT_FALSE(Open("mem/other"));
}

TEST_F(DirectoryLifetime, ForgetsADirectoryWhoseConstructionFailed) {
    struct Failing : Directory {
        Failing(const String& name, Directory* parent) : Directory(name, parent) { throw std::bad_alloc(); }
    };
    EXPECT_THROW(New<Failing>("d", mem.Get()), std::bad_alloc);
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

}  // namespace
}  // namespace ZEMA::testing

// How long directories are found, and what waits for the lock of the tree.
#include <atomic>
#include <chrono>
#include <new>
#include <thread>

#include "storage/Path.h"
#include "storage/RootDirectory.h"
#include "storage/StorageMutex.h"
#include "tests/storage/StorageTest.h"

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

// Otherwise a directory that is let go of here could be found there while it dies.
TEST_F(DirectoryLifetime, AnotherThreadWaitsForTheLock) {
    volume.Put("a/f", "text");
    RefPointer<Directory> a = Open("mem/a");
    const RefPointer<File> file = OpenFile(*mem, "a/f", &kReadWriteStyle, false, nullptr);
    RefPointer<Directory> made;
    char bytes[2];
    Path path;
    BasicArray<String> components;
    const struct {
        const char* what;
        std::function<void()> call;
    } rows[] = {
        {"a directory made", [&] { made = New<Directory>("made", mem.Get()); }},
        {"an alias", [&] { AddAlias(*a, "alias"); }},
        {"the parent", [&] { EXPECT_EQ(GetParent(*a), mem); }},
        {"the full path", [&] { EXPECT_EQ(PathOf(a), "mem/a"); }},
        {"a walk through what is open", [&] { FindOpenDirectory(*mem, components); }},
        {"a path through a volume", [&] { dynamic_cast<RootDirectory&>(*root).OpenPath("mem", false); }},
        {"a path joined", [&] { path.Append("f"); }},
        {"reading", [&] { EXPECT_TRUE(Read(*file, 2, bytes)); }},
        {"writing", [&] { EXPECT_TRUE(Write(*file, 2, "ab")); }},
        {"the last release", [&] { made.Reset(); }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        std::atomic<bool> started{false}, done{false};
        const std::size_t openBefore = mem->GetOpenChildren().Size();
        std::thread other;
        {
            const StorageLock lock;
            other = std::thread([&] {
                started = true;
                row.call();
                done = true;
            });
            while (!started) std::this_thread::yield();
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            EXPECT_FALSE(done);
            EXPECT_EQ(mem->GetOpenChildren().Size(), openBefore) << "nor has it done its work already";
        }
        other.join();
    }
}

}  // namespace
}  // namespace ZEMA::testing

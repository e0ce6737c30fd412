#include "platform/Foundation/NSAutoreleasePool.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <utility>

#include "tests/platform/Foundation/Text.h"

namespace Foundation {
namespace {

// Tells a log when it goes, and may give another one to the pool then.
struct Logged {
    Logged(std::string& target, std::string text, std::string after = "")
        : log(target), name(std::move(text)), next(std::move(after)) {}
    ~Logged() {
        log += name + " ";
        if (!next.empty()) NSAutoreleasePool::autorelease(std::make_unique<Logged>(log, next));
    }
    std::string& log;
    std::string name;
    std::string next;
};

void Give(std::string& log, const char* name, const char* next = "") {
    EXPECT_EQ(NSAutoreleasePool::autorelease(std::make_unique<Logged>(log, name, next))->name, name);
}

TEST(NSAutoreleasePool, ReleasesTheLatestFirstAndTheInnermostAlone) {
    std::string log;
    {
        const NSAutoreleasePool outer;
        Give(log, "a");
        {
            NSAutoreleasePool inner;
            Give(log, "b");
            Give(log, "c", "of-c");
            inner.drain();
            log += "| ";
            Give(log, "d");
        }
        Give(log, "e");
        log += "| ";
    }
    EXPECT_EQ(log, "c of-c b | d | e a ");
}

TEST(NSAutoreleasePool, BelongsToItsThread) {
    std::string log;
    const NSAutoreleasePool pool;
    Give(log, "ours");
    std::thread([&] { Give(log, "theirs"); }).join();
    EXPECT_EQ(log, "theirs ") << "given without a pool, released with the thread";
}

TEST(NSAutoreleasePool, TakesOverOneReference) {
    const Text text = MakeText("a text of its own");
    {
        const NSAutoreleasePool pool;
        EXPECT_EQ(NSAutoreleasePool::autorelease(StringPointer::Retain(text.get()).Take()), text.get());
        EXPECT_EQ(NSAutoreleasePool::autorelease(CFStringRef()), nullptr);
        EXPECT_EQ(CFGetRetainCount(text.get()), 2);
    }
    EXPECT_EQ(CFGetRetainCount(text.get()), 1);
}

}  // namespace
}  // namespace Foundation

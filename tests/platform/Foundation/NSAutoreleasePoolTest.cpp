#include "platform/Foundation/NSAutoreleasePool.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>

#include "tests/platform/Foundation/Text.h"

namespace Foundation {
namespace {

// Tells a log when it goes; one whose name is longer gives the rest of its name to the pool first.
struct Logged {
    ~Logged();
    std::string& log;
    std::string name;
};

void Give(std::string& log, const std::string& name) {
    NSAutoreleasePool::autorelease(std::unique_ptr<Logged>(new Logged{log, name}));
}

Logged::~Logged() {
    log += name[0];
    if (name.size() > 1) Give(log, name.substr(1));
}

TEST(NSAutoreleasePool, ReleasesTheLatestFirstAndTheInnermostAlone) {
    std::string log;
    {
        const NSAutoreleasePool outer;
        Give(log, "a");
        {
            NSAutoreleasePool inner;
            Give(log, "b");
            Give(log, "cC");
            inner.drain();
            log += "|";
            Give(log, "d");
        }
        std::thread([&] { Give(log, "t"); }).join();  // without a pool, released with its thread
        Give(log, "e");
        log += "|";
    }
    EXPECT_EQ(log, "cCb|dt|ea");
}

TEST(NSAutoreleasePool, TakesOverOneReference) {
    const Text text = MakeText("a text of its own");
    {
        const NSAutoreleasePool pool;
        EXPECT_EQ(NSAutoreleasePool::autorelease(StringPointer::Retain(text.get()).Take()), text.get());
        EXPECT_EQ(CFGetRetainCount(text.get()), 2);
    }
    EXPECT_EQ(CFGetRetainCount(text.get()), 1);
}

}  // namespace
}  // namespace Foundation

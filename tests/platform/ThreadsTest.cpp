// What several threads may do at once. The thread sanitizer sees what goes wrong here even when the counts come out.
#include <gtest/gtest.h>

#include <thread>

#include "platform/PlugInInstances.h"
#include "tests/platform/Vectors.h"

namespace ZEMA {
namespace {

constexpr int kThreadCount = 4;
constexpr int kRounds = 2000;

template <class Work>
void OnAllThreads(Work work) {
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreadCount; ++i) {
        threads.emplace_back([&work] {
            for (int round = 0; round < kRounds; ++round) work(round);
        });
    }
    for (std::thread& thread : threads) thread.join();
}

TEST(Threads, ShareATextAndADictionaryThatDoNotChange) {
    const Text text = MakeText("sh\xC3\xA4red");
    const Held<CFMutableDictionaryRef> dictionary(
        CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    CFDictionaryAddValue(dictionary.get(), text.get(), text.get());
    OnAllThreads([&](int) {
        const Text copy(CFStringCreateCopy(nullptr, text.get()));
        EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), copy.get()), text.get());
        EXPECT_EQ(CFStringCompare(copy.get(), CFSTR("SH\xC3\x84RED"), kCFCompareCaseInsensitive), kCFCompareEqualTo);
    });
    EXPECT_EQ(CFGetRetainCount(text.get()), 3);
}

// The last owner of an identifier lets go of it while others ask for the same value.
TEST(Threads, AgreeOnOneIdentifier) {
    const CFUUIDBytes bytes = {9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9};
    OnAllThreads([&](int) {
        const Held<CFUUIDRef> first(CFUUIDCreateFromUUIDBytes(nullptr, bytes));
        const Held<CFUUIDRef> second(CFUUIDCreateFromUUIDBytes(nullptr, bytes));
        EXPECT_EQ(first.get(), second.get());
        EXPECT_EQ(CFUUIDGetUUIDBytes(first.get()).byte15, 9);
    });
    const Held<CFUUIDRef> last(CFUUIDCreateFromUUIDBytes(nullptr, bytes));
    EXPECT_EQ(CFGetRetainCount(last.get()), 1);
}

TEST(Threads, CountPlugInInstancesTogether) {
    const Held<CFUUIDRef> factory(CFUUIDCreateFromString(nullptr, CFSTR("B0000000-0000-0000-0000-000000000001")));
    OnAllThreads([&](int round) {
        CFPlugInAddInstanceForFactory(factory.get());
        if (round % 2 == 0) CFPlugInRemoveInstanceForFactory(factory.get());
    });
    EXPECT_EQ(PlugInInstanceCount(factory.get()), kThreadCount * kRounds / 2);
    for (int i = 0; i < kThreadCount * kRounds / 2; ++i) CFPlugInRemoveInstanceForFactory(factory.get());
}

}  // namespace
}  // namespace ZEMA

// What several threads may do at once. The thread sanitizer sees what goes wrong here even when the counts come out.
#include <gtest/gtest.h>

#include <thread>

#include "platform/PlugInInstances.h"
#include "tests/platform/Vectors.h"

namespace ZEMA {
namespace {

// The last owner of an identifier lets go of it while others ask for the same value.
TEST(Threads, ShareTextsDictionariesAndIdentifiersAndCountInstancesTogether) {
    constexpr int kThreadCount = 4, kRounds = 2000;
    constexpr CFUUIDBytes kBytes = {9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9};
    const Held<CFUUIDRef> factory(CFUUIDCreateFromString(nullptr, CFSTR("B0000000-0000-0000-0000-000000000001")));
    const Text text = MakeText("sh\xC3\xA4red");
    const Held<CFMutableDictionaryRef> dictionary(
        CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    CFDictionaryAddValue(dictionary.get(), text.get(), text.get());
    const auto work = [&] {
        for (int round = 0; round < kRounds; ++round) {
            const Text copy(CFStringCreateCopy(nullptr, text.get()));
            EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), copy.get()), text.get());
            const Held<CFUUIDRef> first(CFUUIDCreateFromUUIDBytes(nullptr, kBytes));
            const Held<CFUUIDRef> second(CFUUIDCreateFromUUIDBytes(nullptr, kBytes));
            EXPECT_EQ(first.get(), second.get());
            EXPECT_EQ(CFUUIDGetUUIDBytes(first.get()).byte15, 9);
            CFPlugInAddInstanceForFactory(factory.get());
            if (round % 2 == 0) CFPlugInRemoveInstanceForFactory(factory.get());
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreadCount; ++i) threads.emplace_back(work);
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(CFGetRetainCount(text.get()), 3);
    EXPECT_EQ(CFGetRetainCount(Held<CFUUIDRef>(CFUUIDCreateFromUUIDBytes(nullptr, kBytes)).get()), 1);
    EXPECT_EQ(PlugInInstanceCount(factory.get()), kThreadCount * kRounds / 2);
    while (PlugInInstanceCount(factory.get()) != 0) CFPlugInRemoveInstanceForFactory(factory.get());
}

}  // namespace
}  // namespace ZEMA

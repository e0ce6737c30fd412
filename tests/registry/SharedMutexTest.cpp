#include "registry/SharedMutex.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

namespace ZEMA {
namespace {

// That a mutex goes with its last share, and not before, is what a build with the address sanitizer checks here.

TEST(SharedMutex, LivesAsLongAsAShareOrAHeldLock) {
    SharedMutex* const mutex = SharedMutex::Create();
    EXPECT_EQ(mutex->ShareCount(), 1);
    mutex->AddShare();
    mutex->DropShare();
    EXPECT_EQ(mutex->ShareCount(), 1);
    {
        const MutexLock outer(*mutex);
        const MutexLock inner(*mutex);
        EXPECT_EQ(mutex->ShareCount(), 3);
        mutex->DropShare();
        EXPECT_EQ(mutex->ShareCount(), 2);
    }
}

TEST(SharedMutex, ShutsOutOtherThreadsAndGoesWithTheLastOfThem) {
    constexpr int kTurns = 5000;
    SharedMutex* const mutex = SharedMutex::Create();
    const auto total = std::make_shared<int>(0);
    const auto work = [mutex, total] {
        for (int turn = 0; turn < kTurns; ++turn) {
            const MutexLock lock(*mutex);
            ++*total;
        }
        mutex->DropShare();
    };
    mutex->AddShare();
    mutex->AddShare();
    std::thread first(work);
    std::thread second(work);
    mutex->DropShare();
    first.join();
    second.join();
    EXPECT_EQ(*total, 2 * kTurns);
}

}  // namespace
}  // namespace ZEMA

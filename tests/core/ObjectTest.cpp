#include "core/Object.h"

#include <gtest/gtest.h>

#include <thread>

#include "core/RefPointer.h"
#include "tests/support/EventLog.h"

namespace ZEMA {
namespace {

using testing::EventLog;
using testing::LoggedObject;

using Reference = RefPointer<LoggedObject>;

TEST(Object, EndsOnceWithItsLastReference) {
    EventLog log;
    {
        auto* const object = new LoggedObject(log, "a");
        EXPECT_EQ(object->ReferenceCount(), 0);
        const Reference first(object);
        const Reference second = first;
        const RefPointer<Object> asBase = second;
        EXPECT_EQ(first->ReferenceCount(), 3);
        EXPECT_TRUE(log.empty());
    }
    EXPECT_EQ(log, (EventLog{"last release of a", "end of a"}));
}

TEST(Object, CountsReferencesOfSeveralThreads) {
    EventLog log;
    Reference held = New<LoggedObject>(log, "a");
    const auto copyOften = [object = held.Get()] {
        for (int turn = 0; turn < 20000; ++turn) {
            const Reference first(object);
            const Reference second(first);
        }
    };
    std::thread threads[] = {std::thread(copyOften), std::thread(copyOften), std::thread(copyOften)};
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(held->ReferenceCount(), 1);
    held.Reset();
    EXPECT_EQ(log.size(), 2U);
}

TEST(RefPointer, AssigningTheSameObjectChangesNothing) {
    EventLog log;
    Reference held = New<LoggedObject>(log, "a");
    const Reference other = held;
    const Reference& itself = held;
    held = itself;
    held = other;
    held.Reset(other.Get());
    EXPECT_EQ(held->ReferenceCount(), 2);
    EXPECT_EQ(held, other);
    EXPECT_TRUE(log.empty());
}

TEST(RefPointer, ReleasesTheOldTargetAfterTakingTheNewOne) {
    // The owner's end lets go of the object that is being assigned over it.
    class Owner : public LoggedObject {
    public:
        Owner(EventLog& log, Reference owned) : LoggedObject(log, "owner"), owned_(std::move(owned)) {}

    private:
        Reference owned_;
    };
    EventLog log;
    Reference held = New<LoggedObject>(log, "owned");
    LoggedObject* const owned = held.Get();
    held = Reference(new Owner(log, held));
    EXPECT_TRUE(log.empty());
    held.Reset(owned);
    EXPECT_EQ(log, (EventLog{"last release of owner", "end of owner"}));
    held = nullptr;
    EXPECT_EQ(held, nullptr);
    EXPECT_EQ(log.back(), "end of owned");
}

TEST(RefPointer, MovingLeavesTheCountAlone) {
    EventLog log;
    Reference first = New<LoggedObject>(log, "a");
    Reference second = New<LoggedObject>(log, "b");
    second = std::move(first);
    EXPECT_EQ(log, (EventLog{"last release of b", "end of b"}));
    EXPECT_EQ(second->ReferenceCount(), 1);
}

}  // namespace
}  // namespace ZEMA

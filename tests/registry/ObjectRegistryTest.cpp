#include "registry/ObjectRegistry.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "registry/ObjectRegistryInstantiator.h"
#include "registry/ObjectRegistryObserver.h"
#include "tests/support/EventLog.h"

namespace ZEMA {
namespace {

using testing::EventLog;
using testing::LoggedObject;

// Makes what a function makes, and counts.
class Maker : public ObjectRegistryInstantiator {
public:
    explicit Maker(std::function<RefPointer<Object>()> make) : make_(std::move(make)) {}
    RefPointer<Object> Instantiate() override {
        ++callCount;
        return make_();
    }
    int callCount = 0;

private:
    std::function<RefPointer<Object>()> make_;
};

class Observer : public ObjectRegistryObserver {
public:
    Observer(EventLog& log, std::string name, bool accepts = true)
        : log_(log), name_(std::move(name)), accepts_(accepts) {}
    bool OnRegister(ObjectRegistry& registry, unsigned long key) override {
        // Not entered yet, and the lock is the caller's: the registry may be asked on this thread.
        Maker nothing([] { return nullptr; });
        Note("register", key, registry.GetOrCreate(key, nothing) == nullptr);
        return accepts_;
    }
    void OnUnregister(ObjectRegistry& registry, unsigned long key) override {
        const bool isGone = registry.Register(key, nullptr);
        Note("unregister", key, isGone);
        if (heir && !registry.Register(key + 100, heir.Get())) log_.push_back("no room for an heir");
    }
    RefPointer<Object> heir;  // registered by this one when it goes

protected:
    ~Observer() override { log_.push_back("end of " + name_); }

private:
    void Note(const char* what, unsigned long key, bool isAbsent) {
        log_.push_back(std::string(what) + " " + name_ + " " + std::to_string(key) + (isAbsent ? "" : " too early"));
    }

    EventLog& log_;
    std::string name_;
    bool accepts_;
};

TEST(ObjectRegistry, MakesAnObjectOnce) {
    EventLog log;
    const auto registry = New<ObjectRegistry>();
    Maker maker([&] { return New<LoggedObject>(log, "a"); });
    const RefPointer<Object> first = registry->GetOrCreate(7, maker);
    EXPECT_EQ(registry->GetOrCreate(7, maker), first);
    EXPECT_EQ(maker.callCount, 1);
    EXPECT_EQ(first->ReferenceCount(), 2);
    EXPECT_FALSE(registry->Register(7, New<LoggedObject>(log, "b").Get()));
    EXPECT_EQ(log, (EventLog{"last release of b", "end of b"}));
}

TEST(ObjectRegistry, AnswersNullWhenNothingIsMadeOrTaken) {
    EventLog log;
    const auto registry = New<ObjectRegistry>();
    Maker nothing([] { return nullptr; });
    EXPECT_EQ(registry->GetOrCreate(1, nothing), nullptr);
    EXPECT_EQ(registry->GetOrCreate(1, nothing), nullptr);
    EXPECT_EQ(nothing.callCount, 2);  // it left no entry

    Maker refusing([&] { return New<Observer>(log, "a", false); });
    EXPECT_EQ(registry->GetOrCreate(2, refusing), nullptr);
    EXPECT_EQ(log, (EventLog{"register a 2", "end of a"}));

    EXPECT_TRUE(registry->Register(3, nullptr));
    EXPECT_EQ(registry->GetOrCreate(3, nothing), nullptr);
    EXPECT_EQ(nothing.callCount, 2);  // the stored null was the answer
}

TEST(ObjectRegistry, AnInstantiatorMayUseTheRegistry) {
    EventLog log;
    const auto registry = New<ObjectRegistry>();
    Maker inner([&] { return New<LoggedObject>(log, "inner"); });
    Maker outer([&] { return registry->GetOrCreate(1, inner); });
    EXPECT_EQ(registry->GetOrCreate(2, outer), registry->GetOrCreate(1, inner));
    Maker same([&] { return registry->GetOrCreate(5, inner); });
    EXPECT_EQ(registry->GetOrCreate(5, same), nullptr);  // the key is taken by the time it returns
}

TEST(ObjectRegistry, RemovesInTheOrderOfKeysAndTellsAfterwards) {
    EventLog log;
    auto registry = New<ObjectRegistry>();
    registry->RemoveAll();
    const auto keep = New<Observer>(log, "kept");
    EXPECT_TRUE(registry->Register(9, keep.Get()));
    EXPECT_TRUE(registry->Register(4, New<LoggedObject>(log, "plain").Get()));
    {
        const auto parent = New<Observer>(log, "parent");
        parent->heir = New<LoggedObject>(log, "heir");
        EXPECT_TRUE(registry->Register(5, parent.Get()));
    }
    log.clear();
    registry->RemoveAll();
    EXPECT_EQ(log, (EventLog{"last release of plain", "end of plain", "unregister parent 5", "end of parent",
                             "unregister kept 9", "last release of heir", "end of heir"}));
    Maker nothing([] { return nullptr; });
    registry->GetOrCreate(5, nothing);
    EXPECT_EQ(nothing.callCount, 1);  // empty again, also of what was registered meanwhile

    log.clear();
    EXPECT_TRUE(registry->Register(1, New<Observer>(log, "last").Get()));
    registry = nullptr;
    EXPECT_EQ(log, (EventLog{"register last 1", "unregister last 1", "end of last"}));
}

TEST(ObjectRegistry, ServesSeveralThreads) {
    EventLog log;
    const auto makeAndTake = [&log] {
        ObjectRegistry* const registry = ObjectRegistry::Instance();
        Maker maker([&log] { return New<LoggedObject>(log, "a"); });
        for (unsigned long key = 0; key < 500; ++key) EXPECT_NE(registry->GetOrCreate(key, maker), nullptr);
        return maker.callCount;
    };
    int counts[3] = {};
    std::thread threads[] = {std::thread([&] { counts[0] = makeAndTake(); }),
                             std::thread([&] { counts[1] = makeAndTake(); }),
                             std::thread([&] { counts[2] = makeAndTake(); })};
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(counts[0] + counts[1] + counts[2], 500);
    ObjectRegistry::Instance()->RemoveAll();
    EXPECT_EQ(log.size(), 1000U);
}

// What an object needs in its last release, as the storage tree needs its lock: made by static initialisation.
struct Lock {
    ~Lock() {
        if (isUsed) std::fputs("lock gone\n", stderr);
    }
    std::recursive_mutex mutex;
    bool isUsed = false;
} theLock;

class NeedsTheLock : public Object {
public:
    NeedsTheLock() { theLock.isUsed = true; }
    void OnLastRelease() override {
        const std::lock_guard guard(theLock.mutex);
        std::fputs("released, ", stderr);
    }
};

TEST(ObjectRegistryDeathTest, IsEmptiedAtExitBeforeStaticsOfNamespaceScopeGo) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // a process of its own, that has made no registry yet
    const auto exitWithAFullRegistry = [] {
        if (ObjectRegistry::Instance()->Register(1, New<NeedsTheLock>().Get())) std::exit(0);
    };
    EXPECT_EXIT(exitWithAFullRegistry(), ::testing::ExitedWithCode(0), "released, lock gone");
}

}  // namespace
}  // namespace ZEMA

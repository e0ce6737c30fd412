// The object registry and the object factory that stands in it.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <thread>

#include "registry/ObjectFactory.h"
#include "registry/ObjectRegistry.h"
#include "registry/SharedMutex.h"
#include "tests/support/AllocationFailure.h"
#include "tests/support/EventLog.h"

namespace ZEMA {
namespace {

using testing::EventLog;
using testing::LoggedObject;

// Makes what a function makes, and counts.
struct Maker : ObjectRegistryInstantiator {
    explicit Maker(std::function<RefPointer<Object>()> function) : make(std::move(function)) {}
    RefPointer<Object> Instantiate() override {
        ++callCount;
        return make();
    }
    std::function<RefPointer<Object>()> make;
    int callCount = 0;
};

// Uses the registry while it is told, and leaves an heir under the key 9 when it goes.
struct Observer : ObjectRegistryObserver {
    Observer(EventLog& events, std::function<bool(ObjectRegistry&)> function)
        : log(events), accepts(std::move(function)) {}
    ~Observer() override { log.push_back("end"); }
    bool OnRegister(ObjectRegistry& registry, unsigned long) override {
        log.push_back("asked");
        return accepts(registry);
    }
    void OnUnregister(ObjectRegistry& registry, unsigned long key) override {
        log.push_back(registry.Register(key, nullptr) ? "told" : "told too early");
        EXPECT_TRUE(registry.Register(9, New<LoggedObject>(log, "heir").Get()));
    }
    EventLog& log;
    std::function<bool(ObjectRegistry&)> accepts;
};

TEST(ObjectRegistry, MakesAnObjectOnceAndAnswersNullWhenNothingIsMadeOrTaken) {
    EventLog log;
    const auto registry = New<ObjectRegistry>();
    Maker maker([&] { return New<LoggedObject>(log, "a"); });
    Maker same([&] { return registry->GetOrCreate(7, maker); });  // the key is taken by the time it returns
    EXPECT_EQ(registry->GetOrCreate(7, same), nullptr);
    EXPECT_NE(registry->GetOrCreate(7, same), nullptr);
    EXPECT_EQ(maker.callCount + same.callCount, 2);
    Maker refusing([&] { return New<Observer>(log, [](ObjectRegistry&) { return false; }); });
    EXPECT_EQ(registry->GetOrCreate(2, refusing), nullptr);
    EXPECT_EQ(log, (EventLog{"asked", "end"}));
    EXPECT_TRUE(registry->Register(2, nullptr));
    EXPECT_EQ(registry->GetOrCreate(2, refusing), nullptr);
    EXPECT_EQ(refusing.callCount, 1);  // the stored null was the answer
    EXPECT_FALSE(registry->Register(2, refusing.make().Get()));
    EXPECT_EQ(log, (EventLog{"asked", "end", "end"}));  // under a taken key it is not asked at all

    // Its key is taken while it is asked; nobody holds a reference that would keep it alive.
    log.clear();
    auto* const overtaken = new Observer(log, [](ObjectRegistry& asking) { return asking.Register(3, nullptr); });
    EXPECT_FALSE(registry->Register(3, overtaken));
    EXPECT_EQ(log, EventLog{"asked"});
    const RefPointer<Object> alive(overtaken);
}

TEST(ObjectRegistry, RemovesInTheOrderOfKeysAndTellsAfterwards) {
    EventLog log;
    auto registry = New<ObjectRegistry>();
    EXPECT_TRUE(registry->Register(5, New<Observer>(log, [](ObjectRegistry&) { return true; }).Get()));
    EXPECT_TRUE(registry->Register(4, New<LoggedObject>(log, "first").Get()));
    registry = nullptr;
    EXPECT_EQ(log, (EventLog{"asked", "last release of first", "end of first", "told", "end", "last release of heir",
                             "end of heir"}));
}

// What an object needs in its last release, as the storage tree needs its lock: made by static initialisation.
struct Lock {
    ~Lock() { std::fputs("lock gone\n", stderr); }
} theLock;

struct NeedsTheLock : Object {
    void OnLastRelease() override { std::fputs("released, ", stderr); }
};

TEST(ObjectRegistryDeathTest, IsEmptiedAtExitBeforeStaticsOfNamespaceScopeGo) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // a process of its own, that has made no registry yet
    const auto exitWithAFullRegistry = [] {
        if (ObjectRegistry::Instance()->Register(1, New<NeedsTheLock>().Get())) std::exit(0);
    };
    EXPECT_EXIT(exitWithAFullRegistry(), ::testing::ExitedWithCode(0), "released, lock gone");
}

struct Shape {};
struct Circle {};
struct Square {};

// A type whose name lies where the test puts it.
struct NamedType : std::type_info {
    explicit NamedType(const char* name) : std::type_info(name) {}
};

// Notes what it is asked and when it goes, and answers with an object or with nothing.
struct Factory : SpecificObjectFactory {
    Factory(EventLog& events, const char* label, FactoryRank rank)
        : SpecificObjectFactory(rank), log(events), name(label) {}
    ~Factory() override { log.push_back("end of " + name); }
    Object* Create(ObjectFactoryArgs*) override {
        EventLog& events = log;  // what is done when it is asked may drop the last reference but the caller's
        const bool isAnswering = answers;
        events.push_back(name);
        if (const auto act = whenAsked) act();
        return isAnswering ? new LoggedObject(events, "object") : nullptr;
    }
    bool Attach() override {
        log.push_back("attach " + name);
        return attaches;
    }
    EventLog& log;
    std::string name;
    bool answers = false;
    bool attaches = true;
    std::function<void()> whenAsked;
};

class ObjectFactoryTest : public ::testing::Test {
protected:
    ~ObjectFactoryTest() override { ObjectRegistry::Instance()->RemoveAll(); }

    RefPointer<Factory> Add(const std::type_info& type, const char* name, FactoryRank rank = FactoryRank::General) {
        const auto added = New<Factory>(log, name, rank);
        EXPECT_TRUE(factory->Register(&type, added.Get(), &typeid(Shape)));
        return added;
    }
    // Which factories are asked for a type, and whether one had an answer.
    EventLog Asked(const std::type_info& type) {
        log.clear();
        const RefPointer<Object> object = factory->Create(&type, nullptr);
        log.push_back(object ? "answer" : "none");
        return log;
    }

    EventLog log;
    RefPointer<ObjectFactory> factory = ObjectFactory::Instance();
};

TEST_F(ObjectFactoryTest, AsksForAConcreteTypeAloneAndForAnAbstractOneByRankAndName) {
    // Their addresses order them neither as their names do nor as they are registered.
    static const char names[] = "triangle\0square\0circle\0zigzag";
    const NamedType triangle(names), square(names + 9), circle(names + 16), zigzag(names + 23);
    Add(square, "squares")->answers = true;
    const auto circles = Add(circle, "circles");
    Add(triangle, "triangles");
    EXPECT_EQ(Asked(typeid(Shape)), (EventLog{"circles", "squares", "answer"}));
    EXPECT_EQ(Asked(circle), (EventLog{"circles", "none"}));
    Add(zigzag, "selective", FactoryRank::Selective);
    EXPECT_EQ(Asked(typeid(Shape)), (EventLog{"selective", "circles", "squares", "answer"}));

    ObjectRegistry::Instance()->RemoveAll();
    EXPECT_NE(ObjectFactory::Instance(), factory);
    factory = ObjectFactory::Instance();  // a new one, that knows nothing
    EXPECT_EQ(Asked(typeid(Shape)), (EventLog{"none"}));

    ObjectRegistry::Instance()->RemoveAll();
    EXPECT_TRUE(ObjectRegistry::Instance()->Register(kObjectFactoryKey, New<LoggedObject>(log, "stranger").Get()));
    EXPECT_EQ(ObjectFactory::Instance(), nullptr);
}

// An object factory that knows a type directly, as a subclass may.
struct DirectFactory : ObjectFactory {
    using ObjectFactory::AddDirect;
};

TEST_F(ObjectFactoryTest, ADirectFactoryIsAskedFirstAndKeepsItsTypeForItself) {
    const auto direct = New<DirectFactory>();
    factory = direct;
    Add(typeid(Square), "squares");
    for (const auto* type : {&typeid(Circle), &typeid(Square)}) {
        EXPECT_TRUE(direct->AddDirect(type, New<Factory>(log, "first", FactoryRank::General).Get()));
        EXPECT_FALSE(direct->AddDirect(type, New<Factory>(log, "second", FactoryRank::General).Get()));
        EXPECT_EQ(Asked(*type), (EventLog{"first", "none"}));  // though the second one is registered too
    }
    EXPECT_EQ(Asked(typeid(Shape)), (EventLog{"squares", "none"}));
}

TEST_F(ObjectFactoryTest, RefusesWithoutChangingAnything) {
    const auto direct = New<DirectFactory>();
    factory = direct;
    EXPECT_TRUE(direct->AddDirect(&typeid(Object), New<Factory>(log, "direct", FactoryRank::General).Get()));
    Add(typeid(Circle), "circles");
    const struct {
        const char* what;
        const std::type_info &concrete, &abstract;
        EventLog events;
    } rows[] = {
        {"the concrete type is known directly", typeid(Object), typeid(Shape), {}},
        {"the abstract type is known directly", typeid(Square), typeid(Object), {}},
        {"the concrete type is registered", typeid(Circle), typeid(Shape), {}},
        {"the concrete type is known as an abstract one", typeid(Shape), typeid(Factory), {}},
        {"it does not attach", typeid(Square), typeid(Shape), {"attach late"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const auto late = New<Factory>(log, "late", FactoryRank::General);
        late->attaches = row.events.empty();
        log.clear();
        EXPECT_FALSE(factory->Register(&row.concrete, late.Get(), &row.abstract));
        EXPECT_EQ(log, row.events);
        EXPECT_EQ(late->ReferenceCount(), 1);
        EXPECT_EQ(late->RegistrationCount(), 0U);
        EXPECT_EQ(late->Mutex(), nullptr);
        EXPECT_EQ(Asked(typeid(Shape)), (EventLog{"circles", "none"}));
        EXPECT_EQ(Asked(typeid(Square)), (EventLog{"none"}));
    }
}

TEST_F(ObjectFactoryTest, RegistersAndAttachesOnceThoughMemoryRanOutBefore) {
    const auto circles = New<Factory>(log, "circles", FactoryRank::General);
    bool isRegistered = false;
    for (long allocations = 0; !isRegistered; ++allocations) {
        testing::allocationsLeft = allocations;
        try {
            ASSERT_TRUE(factory->Register(&typeid(Circle), circles.Get(), &typeid(Shape))) << allocations;
            isRegistered = true;
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(factory->Create(&typeid(Shape), nullptr), nullptr);
        }
        testing::allocationsLeft = testing::kNoAllocationFails;
    }
    EXPECT_TRUE(factory->Register(&typeid(Square), circles.Get(), &typeid(Shape)));
    EXPECT_EQ(circles->RegistrationCount(), 2U);
    EXPECT_EQ(log, EventLog{"attach circles"});
    EXPECT_EQ(Asked(typeid(Shape)), (EventLog{"circles", "circles", "none"}));

    factory = nullptr;
    ObjectRegistry::Instance()->RemoveAll();
    EXPECT_EQ(circles->Mutex()->ShareCount(), 1);  // its own share, which outlives the object factory
}

TEST_F(ObjectFactoryTest, AFactoryMayChangeTheObjectFactoryWhileItIsAsked) {
    const auto circles = Add(typeid(Circle), "circles");
    circles->whenAsked = [&] { Add(typeid(Square), "squares")->answers = true; };
    EXPECT_EQ(Asked(typeid(Shape)), (EventLog{"circles", "attach squares", "squares", "answer"}));

    // Whoever is asked lives until it has answered, even when nobody else keeps it.
    factory = nullptr;
    for (const bool isDirect : {false, true}) {
        ObjectRegistry::Instance()->RemoveAll();
        auto* const last = new DirectFactory;
        EXPECT_TRUE(ObjectRegistry::Instance()->Register(kObjectFactoryKey, last));
        const auto add = [&](const RefPointer<Factory>& asked) {
            asked->whenAsked = [this] {
                ObjectRegistry::Instance()->RemoveAll();
                log.push_back("emptied");
            };
            return isDirect ? last->AddDirect(&typeid(Circle), asked.Get())
                            : last->Register(&typeid(Circle), asked.Get(), &typeid(Shape));
        };
        EXPECT_TRUE(add(New<Factory>(log, "asked", FactoryRank::General)));
        log.clear();
        EXPECT_EQ(last->Create(&typeid(Circle), nullptr), nullptr);
        EXPECT_EQ(log, (EventLog{"asked", "emptied", "end of asked"}));
    }
}

TEST_F(ObjectFactoryTest, LocksOrderTheWorkOfAllThreads) {
    int total = 0;                        // guarded by the object factory's lock
    Maker maker([] { return nullptr; });  // by the registry's
    Add(typeid(Circle), "circles")->whenAsked = [&] { ++total; };
    const auto createOften = [&] {
        for (int turn = 0; turn < 2000; ++turn) {
            EXPECT_EQ(factory->Create(&typeid(Shape), nullptr), nullptr);
            EXPECT_EQ(ObjectRegistry::Instance()->GetOrCreate(1, maker), nullptr);
        }
    };
    std::thread other(createOften);
    createOften();
    other.join();
    EXPECT_EQ(total, 4000);
    EXPECT_EQ(maker.callCount, 4000);
}

}  // namespace
}  // namespace ZEMA

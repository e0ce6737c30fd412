#include "registry/ObjectFactory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <thread>

#include "registry/ObjectRegistry.h"
#include "tests/support/EventLog.h"

namespace ZEMA {
namespace {

using testing::EventLog;
using testing::LoggedObject;

// Types to register; nothing is ever made of them.
struct Shape {};
struct Circle {};
struct Square {};
struct Triangle {};
struct Sound {};
struct Tone {};

// Notes what it is asked, and answers with an object of its name or with nothing.
class Factory : public SpecificObjectFactory {
public:
    Factory(EventLog& log, std::string name, FactoryRank rank = FactoryRank::General, bool answers = true)
        : SpecificObjectFactory(rank), log_(log), name_(std::move(name)), answers_(answers) {}
    Object* Create(ObjectFactoryArgs*) override {
        log_.push_back("ask " + name_);
        if (whenAsked) whenAsked();
        return answers_ ? new LoggedObject(log_, "object of " + name_) : nullptr;
    }
    bool Attach() override {
        log_.push_back("attach " + name_);
        return attaches;
    }
    bool attaches = true;
    std::function<void()> whenAsked;

protected:
    ~Factory() override { log_.push_back("end of " + name_); }

private:
    EventLog& log_;
    std::string name_;
    bool answers_;
};

class ObjectFactoryTest : public ::testing::Test {
protected:
    ~ObjectFactoryTest() override { ObjectRegistry::Instance()->RemoveAll(); }

    RefPointer<Factory> Make(const char* name, FactoryRank rank = FactoryRank::General, bool answers = true) {
        return New<Factory>(log, name, rank, answers);
    }
    // Which factories are asked for a type; `answered` tells whether one had an answer.
    EventLog Asked(const std::type_info& type) {
        log.clear();
        const RefPointer<Object> object = factory->Create(&type, &args);
        answered = object != nullptr;
        return log;
    }

    EventLog log;
    ObjectFactoryArgs args;
    RefPointer<ObjectFactory> factory = ObjectFactory::Instance();
    bool answered = false;
};

TEST_F(ObjectFactoryTest, AnswersForConcreteAndAbstractTypes) {
    EXPECT_TRUE(factory->Register(&typeid(Circle), Make("circles", FactoryRank::General, false).Get(), &typeid(Shape)));
    EXPECT_TRUE(factory->Register(&typeid(Square), Make("squares").Get(), &typeid(Shape)));
    EXPECT_TRUE(factory->Register(&typeid(Triangle), Make("triangles").Get(), &typeid(Shape)));
    EXPECT_TRUE(factory->Register(&typeid(Tone), Make("tones").Get(), &typeid(Sound)));
    // The first answer ends the asking.
    EXPECT_EQ(Asked(typeid(Shape)), (EventLog{"ask circles", "ask squares"}));
    EXPECT_TRUE(answered);
    // A concrete type is its own factory's affair alone.
    EXPECT_EQ(Asked(typeid(Circle)), (EventLog{"ask circles"}));
    EXPECT_FALSE(answered);
    EXPECT_EQ(Asked(typeid(EventLog)), (EventLog{}));

    Object* const object = factory->Create(&typeid(Tone), nullptr);
    EXPECT_EQ(object->ReferenceCount(), 0);
    const RefPointer<Object> taken(object);
}

TEST_F(ObjectFactoryTest, AsksSelectiveFactoriesFirstInWhateverOrderTheyCame) {
    const struct {
        const std::type_info* type;
        const char* name;
        FactoryRank rank;
    } members[] = {{&typeid(Circle), "circles", FactoryRank::General},
                   {&typeid(Square), "squares", FactoryRank::General},
                   {&typeid(Triangle), "triangles", FactoryRank::Selective}};
    std::size_t order[] = {0, 1, 2};
    do {
        SCOPED_TRACE(::testing::PrintToString(order));
        ObjectRegistry::Instance()->RemoveAll();
        factory = ObjectFactory::Instance();
        for (const std::size_t index : order) {
            const auto& member = members[index];
            EXPECT_TRUE(factory->Register(member.type, Make(member.name, member.rank, false).Get(), &typeid(Shape)));
        }
        EXPECT_EQ(Asked(typeid(Shape)), (EventLog{"ask triangles", "ask circles", "ask squares"}));
    } while (std::next_permutation(std::begin(order), std::end(order)));
}

TEST_F(ObjectFactoryTest, AttachesOnceAndCountsRegistrations) {
    const auto shapes = Make("shapes");
    EXPECT_EQ(shapes->Mutex(), nullptr);
    EXPECT_TRUE(factory->Register(&typeid(Circle), shapes.Get(), &typeid(Shape)));
    EXPECT_TRUE(factory->Register(&typeid(Square), shapes.Get(), &typeid(Shape)));
    EXPECT_EQ(shapes->RegistrationCount(), 2U);
    EXPECT_EQ(log, (EventLog{"attach shapes"}));
    ASSERT_NE(shapes->Mutex(), nullptr);
    EXPECT_EQ(shapes->Mutex()->ShareCount(), 2);  // the object factory's and this one's
    factory = nullptr;
    ObjectRegistry::Instance()->RemoveAll();
    EXPECT_EQ(shapes->Mutex()->ShareCount(), 1);
    // A new object factory attaches nothing that was attached before.
    EXPECT_TRUE(ObjectFactory::Instance()->Register(&typeid(Circle), shapes.Get(), &typeid(Shape)));
    EXPECT_EQ(log, (EventLog{"attach shapes"}));
}

// Knows tones directly.
class FactoryWithTones : public ObjectFactory {
public:
    explicit FactoryWithTones(SpecificObjectFactory* tones) {
        EXPECT_TRUE(AddDirect(&typeid(Tone), tones));
        EXPECT_FALSE(AddDirect(&typeid(Tone), tones));
    }
};

TEST_F(ObjectFactoryTest, RefusesWithoutChangingAnything) {
    factory = New<FactoryWithTones>(Make("tones").Get());
    EXPECT_TRUE(factory->Register(&typeid(Circle), Make("circles", FactoryRank::General, false).Get(), &typeid(Shape)));
    const struct {
        const char* what;
        const std::type_info* concrete;
        const std::type_info* abstract;
        bool attaches;
        EventLog events;
    } rows[] = {
        {"the concrete type is direct", &typeid(Tone), &typeid(Shape), true, {}},
        {"the concrete type is registered", &typeid(Circle), &typeid(Shape), true, {}},
        {"the same under another abstract type", &typeid(Circle), &typeid(Sound), true, {}},
        {"the concrete type is known as an abstract one", &typeid(Shape), &typeid(Sound), true, {}},
        {"the abstract type is direct", &typeid(Square), &typeid(Tone), true, {}},
        {"it does not attach", &typeid(Square), &typeid(Shape), false, {"attach late"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const auto late = Make("late");
        late->attaches = row.attaches;
        log.clear();
        EXPECT_FALSE(factory->Register(row.concrete, late.Get(), row.abstract));
        EXPECT_EQ(log, row.events);
        EXPECT_EQ(late->ReferenceCount(), 1);
        EXPECT_EQ(late->RegistrationCount(), 0U);
        EXPECT_EQ(late->Mutex(), nullptr);
        EXPECT_EQ(Asked(typeid(Shape)), (EventLog{"ask circles"}));
        EXPECT_EQ(Asked(typeid(Square)), (EventLog{}));
        EXPECT_EQ(Asked(typeid(Tone)).front(), "ask tones");
    }
}

TEST_F(ObjectFactoryTest, AConcreteTypeStandsForItsAbstractOne) {
    EXPECT_TRUE(factory->Register(&typeid(Circle), Make("circles", FactoryRank::General, false).Get(), &typeid(Shape)));
    EXPECT_TRUE(factory->Register(&typeid(Square), Make("squares").Get(), &typeid(Circle)));
    EXPECT_EQ(Asked(typeid(Shape)), (EventLog{"ask circles", "ask squares"}));
}

TEST_F(ObjectFactoryTest, StartsAnewWhenTheRegistryWasEmptied) {
    const ObjectFactory* const before = factory.Get();
    EXPECT_EQ(ObjectFactory::Instance().Get(), before);
    EXPECT_TRUE(factory->Register(&typeid(Circle), Make("circles").Get(), &typeid(Shape)));
    const RefPointer<ObjectFactory> old = factory;
    ObjectRegistry::Instance()->RemoveAll();
    factory = ObjectFactory::Instance();
    EXPECT_NE(factory, old);
    EXPECT_EQ(Asked(typeid(Circle)), (EventLog{}));

    ObjectRegistry::Instance()->RemoveAll();
    EXPECT_TRUE(ObjectRegistry::Instance()->Register(kObjectFactoryKey, New<LoggedObject>(log, "other").Get()));
    EXPECT_EQ(ObjectFactory::Instance(), nullptr);
}

TEST_F(ObjectFactoryTest, AFactoryMayRegisterOthersWhileItIsAsked) {
    const auto circles = Make("circles", FactoryRank::General, false);
    circles->whenAsked = [&] {
        EXPECT_TRUE(factory->Register(&typeid(Square), Make("squares").Get(), &typeid(Shape)));
    };
    EXPECT_TRUE(factory->Register(&typeid(Circle), circles.Get(), &typeid(Shape)));
    EXPECT_EQ(Asked(typeid(Shape)).front(), "ask circles");
    EXPECT_TRUE(answered);
}

TEST_F(ObjectFactoryTest, AFactoryMayEndTheObjectFactoryWhileItIsAsked) {
    auto circles = Make("circles");
    circles->whenAsked = [] { ObjectRegistry::Instance()->RemoveAll(); };
    EXPECT_TRUE(factory->Register(&typeid(Circle), circles.Get(), &typeid(Shape)));
    ObjectFactory* const last = factory.Get();  // the registry's reference keeps it alive up to the call
    factory = nullptr;
    circles = nullptr;
    log.clear();
    const RefPointer<Object> object = last->Create(&typeid(Shape), &args);
    EXPECT_EQ(log, (EventLog{"ask circles", "end of circles"}));
    EXPECT_NE(object, nullptr);
}

TEST_F(ObjectFactoryTest, OneLockOrdersCreationInAllThreads) {
    int total = 0;  // guarded by the object factory's lock
    const auto circles = Make("circles", FactoryRank::General, false);
    circles->whenAsked = [&] { ++total; };
    EXPECT_TRUE(factory->Register(&typeid(Circle), circles.Get(), &typeid(Shape)));
    const auto createOften = [&] {
        for (int turn = 0; turn < 2000; ++turn) EXPECT_EQ(factory->Create(&typeid(Shape), &args), nullptr);
    };
    std::thread other(createOften);
    createOften();
    other.join();
    EXPECT_EQ(total, 4000);
}

}  // namespace
}  // namespace ZEMA

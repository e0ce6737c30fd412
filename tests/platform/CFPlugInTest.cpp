#include <gtest/gtest.h>

#include "platform/PlugInInstances.h"
#include "tests/platform/Vectors.h"

namespace ZEMA {
namespace {

TEST(CFPlugIn, CountsTheInstancesOfEachFactory) {
    Held<CFUUIDRef> factory(CFUUIDCreateFromString(nullptr, CFSTR("A0000000-0000-0000-0000-000000000001")));
    const Held<CFUUIDRef> other(CFUUIDCreateFromString(nullptr, CFSTR("A0000000-0000-0000-0000-000000000002")));
    EXPECT_EQ(PlugInInstanceCount(factory.get()), 0);
    CFPlugInAddInstanceForFactory(factory.get());
    CFPlugInAddInstanceForFactory(factory.get());
    CFPlugInAddInstanceForFactory(other.get());
    EXPECT_EQ(PlugInInstanceCount(factory.get()), 2);
    EXPECT_EQ(PlugInInstanceCount(other.get()), 1);

    // While it has instances the factory's identifier lives, whoever lets go of it.
    const CFUUIDRef address = factory.get();
    EXPECT_EQ(CFGetRetainCount(address), 2);
    factory.reset();
    factory.reset(CFUUIDCreateFromString(nullptr, CFSTR("A0000000-0000-0000-0000-000000000001")));
    EXPECT_EQ(factory.get(), address);

    CFPlugInRemoveInstanceForFactory(factory.get());
    EXPECT_EQ(PlugInInstanceCount(factory.get()), 1);
    CFPlugInRemoveInstanceForFactory(factory.get());
    EXPECT_EQ(PlugInInstanceCount(factory.get()), 0);
    EXPECT_EQ(CFGetRetainCount(factory.get()), 1);
    CFPlugInRemoveInstanceForFactory(factory.get());  // one too many
    EXPECT_EQ(PlugInInstanceCount(factory.get()), 0);
    EXPECT_EQ(CFGetRetainCount(factory.get()), 1);
    CFPlugInRemoveInstanceForFactory(other.get());
}

}  // namespace
}  // namespace ZEMA

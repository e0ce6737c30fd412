#include <gtest/gtest.h>

#include "platform/PlugInInstances.h"
#include "tests/platform/Vectors.h"

namespace ZEMA {
namespace {

TEST(CFPlugIn, CountsTheInstancesOfEachFactory) {
    const Held<CFUUIDRef> factory(CFUUIDCreateFromString(nullptr, CFSTR("A0000000-0000-0000-0000-000000000001")));
    const Held<CFUUIDRef> other(CFUUIDCreateFromString(nullptr, CFSTR("A0000000-0000-0000-0000-000000000002")));
    CFPlugInAddInstanceForFactory(factory.get());
    CFPlugInAddInstanceForFactory(factory.get());
    CFPlugInAddInstanceForFactory(other.get());
    EXPECT_EQ(PlugInInstanceCount(factory.get()), 2);
    EXPECT_EQ(CFGetRetainCount(factory.get()), 2) << "while it has instances the identifier lives";
    for (const CFIndex left : {1, 0, 0}) {  // the last time one too many
        CFPlugInRemoveInstanceForFactory(factory.get());
        EXPECT_EQ(PlugInInstanceCount(factory.get()), left);
        EXPECT_EQ(CFGetRetainCount(factory.get()), left + 1);
    }
    EXPECT_EQ(PlugInInstanceCount(other.get()), 1);
    CFPlugInRemoveInstanceForFactory(other.get());
}

}  // namespace
}  // namespace ZEMA

#include <gtest/gtest.h>

#include <CoreServices/CoreServices.h>

#include <bit>

#include "platform/PlugInInstances.h"
#include "tests/platform/Vectors.h"

namespace ZEMA {
namespace {

using UUID = Held<CFUUIDRef>;

UUID FromText(const char* text) {
    return UUID(CFUUIDCreateFromString(nullptr, MakeText(text).get()));
}

TEST(CFUUID, ReadsAsMeasured) {
    for (const Json& row : VectorsOf("misc.json")) {
        if (row["op"] != "uuid_from_string") continue;
        SCOPED_TRACE(row.dump());
        const UUID uuid(CFUUIDCreateFromString(nullptr, TextOf(row, "text").get()));
        ASSERT_EQ(uuid != nullptr, row["ok"].get<bool>());
        if (!uuid) continue;
        const auto bytes = std::bit_cast<std::array<UInt8, 16>>(CFUUIDGetUUIDBytes(uuid.get()));
        EXPECT_EQ(std::vector<UInt8>(bytes.begin(), bytes.end()), BytesFromHex(row["bytes"]));
    }
}

TEST(CFUUID, EqualOnesAreOneObjectThatCanBecomeConstant) {
    const UUID held = FromText("00112233-4455-6677-8899-AABBCCDDEEFF");
    const UUID second(CFUUIDCreateFromUUIDBytes(nullptr, CFUUIDGetUUIDBytes(held.get())));
    EXPECT_EQ(held, second);
    EXPECT_EQ(CFGetRetainCount(held.get()), 2);
    EXPECT_FALSE(CFEqual(held.get(), FromText("00112233-4455-6677-8899-AABBCCDDEEFE").get()));
    const CFUUIDRef constant = CFUUIDGetConstantUUIDWithBytes(nullptr, 0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77,
                                                              0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF);
    EXPECT_EQ(constant, held.get());
    for (int i = 0; i < 5; ++i) CFRelease(constant);
    EXPECT_GT(CFGetRetainCount(constant), 1'000'000);
}

TEST(CFUUID, ThePlatformsOwnHaveTheirValues) {
    EXPECT_EQ(FromText("8B08C4BF-415B-11D8-B3F9-0003936726FC").get(), kMDImporterTypeID);
    EXPECT_EQ(FromText("6EBC27C4-899C-11D8-84AE-0003936726FC").get(), kMDImporterInterfaceID);
    EXPECT_EQ(FromText("00000000-0000-0000-C000-000000000046").get(), IUnknownUUID);
    EXPECT_TRUE(CFEqual(kMDItemKeywords, CFSTR("kMDItemKeywords")));
}

TEST(CFPlugIn, CountsTheInstancesOfEachFactory) {
    const UUID factory = FromText("A0000000-0000-0000-0000-000000000001");
    const UUID other = FromText("A0000000-0000-0000-0000-000000000002");
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

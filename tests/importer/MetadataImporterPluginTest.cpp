#include "importer/MetadataImporterPlugin.h"

#include <CoreServices/CoreServices.h>
#include <gtest/gtest.h>

#include "platform/PlugInInstances.h"

namespace ZEMA::testing {

namespace {

CFUUIDRef FactoryID() {
    static const CFUUIDRef id = CFUUIDCreateFromString(kCFAllocatorDefault, CFSTR(ZEMA_METADATA_IMPORTER_FACTORY_ID));
    return id;
}

MDImporterInterfaceStruct* TableOf(void* instance) {
    return *static_cast<MDImporterInterfaceStruct**>(instance);
}

CFUUIDBytes Changed(CFUUIDBytes bytes) {
    ++bytes.byte15;
    return bytes;
}

}  // namespace

TEST(MetadataImporterPlugin, MakesInstancesOfItsTypeOnly) {
    const CFIndex references = CFGetRetainCount(FactoryID());
    for (const CFUUIDRef other : {kMDImporterInterfaceID, CFUUIDRef()}) {
        EXPECT_EQ(MetadataImporterPluginFactory(nullptr, other), nullptr);
    }
    EXPECT_EQ(PlugInInstanceCount(FactoryID()), 0);

    void* const first = MetadataImporterPluginFactory(nullptr, kMDImporterTypeID);
    void* const second = MetadataImporterPluginFactory(nullptr, kMDImporterTypeID);
    ASSERT_NE(first, nullptr);
    EXPECT_NE(first, second);
    EXPECT_EQ(TableOf(first), TableOf(second));
    EXPECT_EQ(PlugInInstanceCount(FactoryID()), 2);
    EXPECT_GE(CFGetRetainCount(FactoryID()), references + 2) << "each holds its factory's identifier";

    // Each has a count of its own.
    EXPECT_EQ(MetadataImporterPluginAddRef(first), 2u);
    EXPECT_EQ(MetadataImporterPluginRelease(second), 0u);
    EXPECT_EQ(PlugInInstanceCount(FactoryID()), 1);
    EXPECT_EQ(MetadataImporterPluginRelease(first), 1u);
    EXPECT_EQ(MetadataImporterPluginRelease(first), 0u);
    EXPECT_EQ(PlugInInstanceCount(FactoryID()), 0);
    EXPECT_EQ(CFGetRetainCount(FactoryID()), references) << "and lets go of it";
}

TEST(MetadataImporterPlugin, AnswersForItsInterfacesThroughTheTable) {
    void* const instance = MetadataImporterPluginFactory(nullptr, kMDImporterTypeID);
    const MDImporterInterfaceStruct* const table = TableOf(instance);
    EXPECT_EQ(table->_reserved, nullptr);
    EXPECT_EQ(table->ImporterImportData, &GetMetadataForFile);

    const CFUUIDBytes importer = CFUUIDGetUUIDBytes(kMDImporterInterfaceID);
    const CFUUIDBytes base = CFUUIDGetUUIDBytes(IUnknownUUID);
    void* result = nullptr;
    for (const CFUUIDBytes& interface : {importer, base}) {
        EXPECT_EQ(table->QueryInterface(instance, interface, &result), S_OK);
        EXPECT_EQ(result, instance);
    }
    EXPECT_EQ(table->AddRef(instance), 4u);  // two came with the interfaces

    for (const CFUUIDBytes& interface : {Changed(importer), CFUUIDGetUUIDBytes(kMDImporterTypeID)}) {
        result = instance;
        EXPECT_EQ(static_cast<UInt32>(table->QueryInterface(instance, interface, &result)), 0x80000004u);
        EXPECT_EQ(result, nullptr);
    }
    for (ULONG count = 4; count > 0; --count) EXPECT_EQ(table->Release(instance), count - 1);
}

}  // namespace ZEMA::testing

// The bundle as it lies in the build folder: loaded as the indexing service would, and looked at from outside.

#include <CoreServices/CoreServices.h>
#include <gtest/gtest.h>
#include <stdio.h>

#include <set>
#include <sstream>

#include "host/plugin/Bundle.h"
#include "host/plugin/PluginHost.h"
#include "host/system/FileDescriptor.h"
#include "host/system/Utf8Text.h"
#include "importer/AttributeSet.h"
#include "importer/MetadataImporterPlugin.h"
#include "platform/PlugInInstances.h"
#include "tests/importer/Attributes.h"

namespace ZEMA::testing {

namespace {

std::string OutputOf(const std::string& command) {
    std::string output;
    FILE* const pipe = popen(command.c_str(), "r");
    for (int unit = getc(pipe); unit != EOF; unit = getc(pipe)) output += static_cast<char>(unit);
    EXPECT_EQ(pclose(pipe), 0) << command;
    return output;
}

}  // namespace

TEST(Bundle, ExportsItsFiveFunctionsAndNothingElse) {
    const std::string module = ZEMA_BUNDLE "/Contents/Linux/WQFImporter";
    std::istringstream lines(OutputOf("nm -D --defined-only '" + module + "'"));
    std::set<std::string> symbols;
    for (std::string address, kind, name; lines >> address >> kind >> name;) symbols.insert(kind + " " + name);
    EXPECT_EQ(symbols, (std::set<std::string>{"T GetMetadataForFile", "T MetadataImporterPluginAddRef",
                                              "T MetadataImporterPluginFactory", "T MetadataImporterPluginRelease",
                                              "T MetadataImporterQueryInterface"}));
}

TEST(Bundle, DeclaresTheFactoryThatItHas) {
    const Result<BundleInfo> info = ReadBundleInfo(ZEMA_BUNDLE);
    ASSERT_TRUE(info) << info.Why().text;
    ASSERT_EQ(info->factories.size(), 1u);
    EXPECT_EQ(info->factories[0].type, "8B08C4BF-415B-11D8-B3F9-0003936726FC");
    EXPECT_EQ(info->factories[0].factory, ZEMA_METADATA_IMPORTER_FACTORY_ID);
    EXPECT_EQ(info->contentType, "com.zema.wqf");
}

// A misspelt name would show its attribute nowhere and be noticed by nobody.
TEST(Bundle, DescribesItsAttributesInTheSchema) {
    std::string all;
    const std::string schema = *ReadRegularFile(ZEMA_BUNDLE "/Contents/Resources/schema.xml", 1 << 20);
    for (const CFStringRef name : AttributeNames()) {
        all += (all.empty() ? "" : " ") + Utf8Of(name);
        const bool described = schema.find("<attribute name=\"" + Utf8Of(name) + "\"") != std::string::npos;
        EXPECT_EQ(described, Utf8Of(name).starts_with("com_zema_")) << Utf8Of(name);
    }
    EXPECT_NE(schema.find("<allattrs>" + all + "</allattrs>"), std::string::npos);
}

TEST(Bundle, CountsItsInstanceWhileAHostHoldsIt) {
    const Foundation::CFPointer<CFUUIDRef> factory(
        CFUUIDCreateFromString(kCFAllocatorDefault, CFSTR(ZEMA_METADATA_IMPORTER_FACTORY_ID)));
    Result<PluginHost> host = PluginHost::Load(ZEMA_BUNDLE);
    ASSERT_TRUE(host) << host.Why().text;
    EXPECT_EQ(PlugInInstanceCount(factory.Get()), 1);
    EXPECT_EQ(host->Close().text, "");
    EXPECT_EQ(PlugInInstanceCount(factory.Get()), 0);
}

}  // namespace ZEMA::testing

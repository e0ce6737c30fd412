// The bundle as it lies in the build folder: loaded as the indexing service would, and looked at from outside.

#include <CoreServices/CoreServices.h>
#include <gtest/gtest.h>
#include <stdio.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "host/BundleInfo.h"
#include "host/FileReading.h"
#include "host/PluginHost.h"
#include "host/Utf8Text.h"
#include "importer/AttributeSet.h"
#include "importer/MetadataImporterPlugin.h"
#include "platform/PlugInInstances.h"
#include "tests/importer/Attributes.h"
#include "xml/XMLDOMAString.h"

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
    std::string problem;
    const std::optional<BundleInfo> info = ReadBundleInfo(ZEMA_BUNDLE, problem);
    ASSERT_TRUE(info) << problem;
    ASSERT_EQ(info->factories.size(), 1u);
    const Foundation::CFPointer<CFStringRef> type(CFUUIDCreateString(kCFAllocatorDefault, kMDImporterTypeID));
    EXPECT_EQ(info->factories[0].type, Utf8Of(type.Get()));
    EXPECT_EQ(info->factories[0].factory, ZEMA_METADATA_IMPORTER_FACTORY_ID);
    EXPECT_EQ(info->contentType, "com.zema.wqf");
}

// A misspelt name would show its attribute nowhere and be noticed by nobody.
TEST(Bundle, DescribesItsOwnAttributesInTheSchema) {
    std::string problem;
    const std::optional<std::string> text =
        ReadRegularFile(ZEMA_BUNDLE "/Contents/Resources/schema.xml", 1 << 20, problem);
    ASSERT_TRUE(text) << problem;
    const RefPointer<XMLDOMAString> schema = New<XMLDOMAString>();
    ASSERT_TRUE(schema->Parse(AString(text->c_str()), nullptr));

    std::set<std::string> described, own;
    for (const auto& attribute : schema->FindChild("attributes")->children) {
        AString name;
        EXPECT_TRUE(attribute->GetAttribute("name", name));
        described.emplace(name.View());
    }
    std::string all;
    for (const CFStringRef name : AttributeNames()) {
        const std::string text8 = Utf8Of(name);
        if (text8.starts_with("com_zema_")) own.insert(text8);
        all += (all.empty() ? "" : " ") + text8;
    }
    EXPECT_EQ(described, own);
    for (const auto& type : schema->FindChild("types")->children) {
        EXPECT_EQ(type->FindChild("allattrs")->GetText(), all.c_str());
    }
}

TEST(Bundle, CountsItsInstanceWhileAHostHoldsIt) {
    const Foundation::CFPointer<CFUUIDRef> factory(
        CFUUIDCreateFromString(kCFAllocatorDefault, CFSTR(ZEMA_METADATA_IMPORTER_FACTORY_ID)));
    std::string problem;
    const std::unique_ptr<PluginHost> host = PluginHost::Load(ZEMA_BUNDLE, problem);
    ASSERT_TRUE(host) << problem;
    EXPECT_EQ(PlugInInstanceCount(factory.Get()), 1);
    EXPECT_TRUE(host->Close(problem)) << problem;
    EXPECT_EQ(PlugInInstanceCount(factory.Get()), 0);
}

}  // namespace ZEMA::testing

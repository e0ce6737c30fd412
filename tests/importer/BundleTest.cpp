// The bundle as it lies in the build folder, loaded as the indexing service would and looked at from outside; the
// instances that it makes.
#include <CoreServices/CoreServices.h>
#include <gtest/gtest.h>
#include <stdio.h>

#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "host/plugin/PluginHost.h"
#include "host/print/JsonWriter.h"
#include "host/print/PropertyList.h"
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

constexpr const char* kLanguages[] = {"da", "de", "en"};

// A file of the bundle, as text.
std::string Read(const std::string& name) {
    const Result<std::string> text = ReadRegularFile(ZEMA_BUNDLE "/Contents/" + name, 1 << 20);
    EXPECT_TRUE(text) << name << ": " << text.Why().text;
    return text ? *text : "";
}

// The texts by their keys. A line that is none would have the system pass over all of them.
std::map<std::string, std::string> StringsOf(const std::string& language, const std::string& name) {
    static const std::regex form(R"re(("([^"]+)"|([\w.]+)) = "([^"]+)";)re");
    std::map<std::string, std::string> strings;
    std::istringstream lines(Read("Resources/" + language + ".lproj/" + name));
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        EXPECT_TRUE(std::regex_match(line, match, form)) << language << ", " << line;
        strings[match.str(2) + match.str(3)] = match.str(4);
    }
    return strings;
}

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

TEST(Bundle, ExportsItsFiveFunctionsAndNothingElse) {
    const std::string module = ZEMA_BUNDLE "/Contents/Linux/WQFImporter";
    std::istringstream lines(OutputOf("nm -D --defined-only '" + module + "'"));
    std::set<std::string> symbols;
    for (std::string address, kind, name; lines >> address >> kind >> name;) symbols.insert(kind + " " + name);
    EXPECT_EQ(symbols, (std::set<std::string>{"T GetMetadataForFile", "T MetadataImporterPluginAddRef",
                                              "T MetadataImporterPluginFactory", "T MetadataImporterPluginRelease",
                                              "T MetadataImporterQueryInterface"}));
}

// The keys that the system documents for a metadata importer: one that is missing or misspelt and the bundle is passed
// over, without a word.
TEST(Bundle, SaysOfItselfWhatTheSystemAsks) {
    const Result<Value> list = ReadPropertyList(Read("Info.plist"));
    ASSERT_TRUE(list) << list.Why().text;
    const struct {
        const char* key;
        std::string json;
    } rows[] = {
        {"CFBundleDevelopmentRegion", R"("en")"},
        {"CFBundleExecutable", R"("WQFImporter")"},
        {"CFBundleIdentifier", R"("com.zema.wqf.importer")"},
        {"CFBundleInfoDictionaryVersion", R"("6.0")"},
        {"CFBundlePackageType", R"("BNDL")"},
        {"CFBundleVersion", R"(")" ZEMA_VERSION R"(")"},
        {"CFBundleDocumentTypes", R"([{"CFBundleTypeName":"WQF document","CFBundleTypeRole":"MDImporter",)"
                                  R"("LSItemContentTypes":["com.zema.wqf","com.zema.wqfml"]}])"},
        {"CFPlugInDynamicRegistration", R"("NO")"},
        {"CFPlugInDynamicRegisterFunction", R"("")"},
        {"CFPlugInUnloadFunction", R"("")"},
        {"CFPlugInFactories", R"({")" ZEMA_METADATA_IMPORTER_FACTORY_ID R"(":"MetadataImporterPluginFactory"})"},
        {"CFPlugInTypes", R"({"8B08C4BF-415B-11D8-B3F9-0003936726FC":[")" ZEMA_METADATA_IMPORTER_FACTORY_ID R"("]})"},
    };
    for (const auto& row : rows) {
        const Value* const value = Find(*list->AsDictionary(), row.key);
        EXPECT_EQ(value == nullptr ? "missing" : JsonText(*value), row.json) << row.key;
    }
}

// Every type that the importer is for: known by its ending, with all attributes in the schema, and with a name in every
// language. What is left out shows nowhere and is noticed by nobody.
TEST(Bundle, DeclaresItsTypesAndAttributes) {
    std::string all;
    for (const CFStringRef name : AttributeNames()) all += (all.empty() ? "" : " ") + Utf8Of(name);
    const std::string schema = Read("Resources/schema.xml");
    const Result<Value> list = ReadPropertyList(Read("Info.plist"));
    ASSERT_TRUE(list) << list.Why().text;
    const Value* const types = Find(*list->AsDictionary(), "UTImportedTypeDeclarations");
    ASSERT_NE(types, nullptr);
    std::string declared;
    for (const Value& type : *types->AsList()) {
        declared += JsonText(*Find(*type.AsDictionary(), "UTTypeIdentifier")) +
                    JsonText(*Find(*type.AsDictionary(), "UTTypeTagSpecification"));
        const std::string start = "<type name=\"" + *Find(*type.AsDictionary(), "UTTypeIdentifier")->AsText() + "\">";
        const std::size_t at = schema.find(start);
        ASSERT_NE(at, std::string::npos) << start;
        EXPECT_EQ(schema.find("<allattrs>" + all + "</allattrs>", at), schema.find("<allattrs>", at)) << start;
        for (const char* language : kLanguages) {
            const std::string name = *Find(*type.AsDictionary(), "UTTypeDescription")->AsText();
            EXPECT_NE(StringsOf(language, "InfoPlist.strings")[name], "") << language << ", " << name;
        }
    }
    EXPECT_EQ(declared, R"("com.zema.wqf"{"public.filename-extension":["wqf"],"public.mime-type":"application/x-wqf"})"
                        R"("com.zema.wqfml"{"public.filename-extension":["wqfml"],)"
                        R"("public.mime-type":"application/x-wqfml+xml"})");
}

// The system knows its own attributes; ours need a kind, and a name and an explanation in every language.
TEST(Bundle, NamesItsOwnAttributesInEveryLanguage) {
    const std::string schema = Read("Resources/schema.xml");
    for (const CFStringRef name : AttributeNames()) {
        const std::string attribute = Utf8Of(name);
        const bool ours = attribute.starts_with("com_zema_");
        EXPECT_EQ(schema.find("<attribute name=\"" + attribute + "\"") != std::string::npos, ours) << attribute;
        for (const char* language : kLanguages) {
            std::map<std::string, std::string> strings = StringsOf(language, "schema.strings");
            EXPECT_EQ(strings[attribute] != "", ours) << language << ", " << attribute;
            EXPECT_EQ(strings[attribute + ".Description"] != "", ours) << language << ", " << attribute;
        }
    }
}

TEST(Bundle, CountsItsInstanceWhileAHostHoldsIt) {
    Result<PluginHost> host = PluginHost::Load(ZEMA_BUNDLE);
    ASSERT_TRUE(host) << host.Why().text;
    EXPECT_EQ(PlugInInstanceCount(FactoryID()), 1);
    EXPECT_EQ(host->Close().text, "");
    EXPECT_EQ(PlugInInstanceCount(FactoryID()), 0);
}

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

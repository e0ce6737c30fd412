#include "host/plugin/PluginHost.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "host/documents/DocumentRecord.h"
#include "host/print/JsonWriter.h"
#include "host/system/FileDescriptor.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

namespace {

namespace fs = std::filesystem;

constexpr const char* kFactoryLine = "<key>1A62A22C-F866-420C-AF47-37B71F698B92</key>";
constexpr const char* kFunction = "<string>MetadataImporterPluginFactory</string>";

// A copy of the bundle, for a test to break.
class BrokenBundle {
public:
    BrokenBundle() : path_(folder_ / "B.mdimporter") { fs::copy(ZEMA_BUNDLE, path_, fs::copy_options::recursive); }

    const std::string& Path() const { return path_; }
    std::string Module() const { return path_ + "/Contents/Linux/WQFImporter"; }

    // Replaces the first such text in the property list.
    void Replace(const std::string& from, const std::string& to) {
        std::string text = *ReadRegularFile(path_ + "/Contents/Info.plist", 1 << 20);
        const std::size_t place = text.find(from);
        ASSERT_NE(place, std::string::npos) << from;
        folder_.Write("B.mdimporter/Contents/Info.plist", text.replace(place, from.size(), to));
    }

    // What a host says of it, without the path in front; empty when it loads.
    std::string Problem() const {
        const std::string problem = PluginHost::Load(path_).Why().text;
        EXPECT_TRUE(problem.empty() || problem.starts_with(path_ + "/Contents/")) << problem;
        return problem.substr(problem.empty() ? 0 : problem.find(": ") + 2);
    }

private:
    TemporaryFolder folder_;
    std::string path_;
};

}  // namespace

TEST(PluginHost, PutsABrokenPropertyListIntoWords) {
    const struct {
        std::string from;
        std::string to;
        const char* problem;
    } rows[] = {
        {"</plist>", "", "it is not well-formed XML"},
        {"<dict>", "</plist><!--", "it is not well-formed XML"},
        {"<key>CFBundleExecutable</key>", "", "a dictionary holds a value without a key"},
        {"<string>WQFImporter</string>", "", "the key 'CFBundleExecutable' has no value"},
        {"<key>CFBundleExecutable</key>", "<key>CFBundleExec</key>", "CFBundleExecutable is missing"},
        {"<string>WQFImporter</string>", "<string>../WQFImporter</string>", "CFBundleExecutable is no file name"},
        {"<string>WQFImporter</string>", "<array/>", "CFBundleExecutable is no file name"},
        {"<string>WQFImporter</string>", "<string>Other</string>", "no such file"},
        {"<string>WQFImporter</string>", "<data>AA</data>", "it holds an element <data>, which is not understood"},
        {"CFPlugInFactories", "CFPlugInFactory", "CFPlugInFactories is missing"},
        {"CFPlugInTypes", "CFPlugInType", "CFPlugInTypes is missing"},
        {"8B08C4BF-415B", "8B08C4BF415B", "CFPlugInTypes: '8B08C4BF415B-11D8-B3F9-0003936726FC' is no UUID"},
        {"8B08C4BF-415B", "9B08C4BF-415B",
         "the factory makes no importer of the type 9B08C4BF-415B-11D8-B3F9-0003936726FC"},
        {kFactoryLine, "<key>2A62A22C-F866-420C-AF47-37B71F698B92</key>",
         "CFPlugInFactories lacks the factory 1A62A22C-F866-420C-AF47-37B71F698B92"},
        {kFunction, "<string/>", "CFPlugInFactories: the factory 1A62A22C-F866-420C-AF47-37B71F698B92 has no function"},
        {kFunction, "<string>Factory</string>", "exports no function Factory"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.from + " -> " + row.to);
        BrokenBundle bundle;
        bundle.Replace(row.from, row.to);
        EXPECT_EQ(bundle.Problem(), row.problem);
    }
}

TEST(PluginHost, RefusesWhatIsNoModule) {
    BrokenBundle bundle;
    fs::remove(bundle.Module());
    ASSERT_EQ(mkfifo(bundle.Module().c_str(), 0666), 0);
    EXPECT_EQ(bundle.Problem(), "is a pipe, not a regular file");
    fs::remove(bundle.Module());
    fs::copy(bundle.Path() + "/Contents/Info.plist", bundle.Module());
    EXPECT_NE(bundle.Problem(), "");
}

TEST(PluginHost, ReadsBundlesThatAreWrittenOtherwise) {
    BrokenBundle bundle;
    bundle.Replace("CFBundleDocumentTypes", "Other");
    EXPECT_EQ(ReadBundleInfo(bundle.Path())->contentType, "public.data");
    const std::string other = "2A62A22C-F866-420C-AF47-37B71F698B92";
    bundle.Replace("<string>1A62A22C", "<string>" + other + "</string>\n<string>1A62A22C");
    bundle.Replace(kFactoryLine, "<key>" + other + "</key><string>Missing</string>" + kFactoryLine);
    EXPECT_EQ(bundle.Problem(), "") << "the second factory makes an importer";
}

TEST(PluginHost, SeesThroughStrangeFactories) {
    BrokenBundle bundle;
    fs::copy(ZEMA_STRANGE_MODULE, bundle.Module(), fs::copy_options::overwrite_existing);
    bundle.Replace("MetadataImporterPluginFactory", "MakesNothing");
    EXPECT_EQ(bundle.Problem(), "the factory makes no importer of the type 8B08C4BF-415B-11D8-B3F9-0003936726FC");
    bundle.Replace("MakesNothing", "MakesNoImporter");
    EXPECT_EQ(bundle.Problem(), "the factory makes no importer of the type 8B08C4BF-415B-11D8-B3F9-0003936726FC");
    bundle.Replace("MakesNoImporter", "LeavesAnInstance");
    Result<PluginHost> host = PluginHost::Load(bundle.Path());
    ASSERT_TRUE(host) << host.Why().text;
    const fs::path relative = fs::relative(bundle.Module());
    EXPECT_EQ(JsonText({ImportDocument(*host, {relative.string(), {}}).attributes}),
              R"({"kMDItemVersion":"5","a":")" + (fs::current_path() / relative).string() + R"("})");
    EXPECT_TRUE(ImportDocument(*host, {"x", SystemFailure(EIO)}).passing);
    EXPECT_FALSE(ImportDocument(*host, {"x", SystemFailure(ENOENT)}).passing);
    EXPECT_EQ(host->Close().text, bundle.Module() + ": the plug-in left 1 instances behind");
    EXPECT_NE(dlopen(bundle.Module().c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr) << "its code must stay";
}

}  // namespace ZEMA::testing

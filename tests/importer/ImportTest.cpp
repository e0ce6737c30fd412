// Whole documents through the bundle, loaded at run time, and through the exported function itself; the paths in the
// storage tree by which they are opened.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <thread>
#include <vector>

#include "host/plugin/PluginHost.h"
#include "importer/DocumentLoad.h"
#include "importer/MetadataImporterPlugin.h"
#include "tests/importer/Attributes.h"
#include "tests/support/AllocationFailure.h"
#include "tests/support/ArchiveBuilder.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

namespace {

namespace fs = std::filesystem;

constexpr const char* kModel4 =
    R"(<WQFML versionMajor="4"><Scene><Model><Group refID="1"><Part refID="1" designID="42" materialID="21"/></Group></Model></Scene></WQFML>)";
constexpr const char* kModel4Text =
    R"({"com_zema_wqf_listofbricks":["42"],"com_zema_wqf_numberofbricks":1,"kMDItemVersion":"4"})";

class ImportTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(host_) << host_.Why().text; }

    // The attributes as text, or nothing; then there must be none.
    std::string Imported(const std::string& path) const {
        const Attributes attributes = NewAttributes();
        if (host_->Import(PathString(path).Get(), attributes.Get())) return TextOf(attributes);
        EXPECT_EQ(CFDictionaryGetCount(attributes.Get()), 0);
        return "";
    }

    const Result<PluginHost> host_ = PluginHost::Load(ZEMA_BUNDLE);
    const TemporaryFolder folder_;
};

std::string Packed(const std::string& model, const std::string& name = "IMAGE100.WQFML") {
    return ArchiveBuilder().Stored(name, model).Bytes();
}

std::string StoragePath(const std::string& path) {
    return std::string(StoragePathOf(PathString(path).Get()).ToAString().View());
}

}  // namespace

TEST_F(ImportTest, TellsDocumentsByTheirContents) {
    const std::string model = SmallModel5();
    const struct {
        const char* what;
        std::string bytes;
        const char* imported;
    } rows[] = {
        {"a bare model, whatever its name", model, kSmallModelText},
        {"a stored member", Packed(model), kSmallModelText},
        {"a deflated member among others",
         ArchiveBuilder().Folder("t/").Stored("t/a.png", "x").Deflated("IMAGE100.WQFML", model).Comment("hi").Bytes(),
         kSmallModelText},
        {"a member named in another case", Packed(model, "image100.wqfML"), kSmallModelText},
        {"an archive without the model", Packed(model, "IMAGE200.WQFML"), ""},
        {"the model in a folder of the archive", Packed(model, "x/IMAGE100.WQFML"), ""},
        {"a damaged member", ArchiveBuilder().Stored("IMAGE100.WQFML", model).Build().Set32(0, 0).bytes, ""},
        {"an empty model member", Packed(""), ""},
        {"a damaged archive is not even a model", Packed(model).erase(100, 1), ""},
        {"another markup", "<html/>", ""},
        {"a model of format 4", Packed(kModel4), kModel4Text},
        {"a version that nobody reads", R"(<WQFML versionMajor="6"/>)", ""},
        {"an error of the content", Model5("<Bricks><Brick refID=\"1\"/></Bricks>"), ""},
        {"a model without the section that it needs", Model5("<Meta/>"), ""},
    };
    for (const auto& row : rows) EXPECT_EQ(Imported(folder_.Write("a.wqf", row.bytes)), row.imported) << row.what;
}

TEST_F(ImportTest, FollowsLinksAndFoldersToWhatIsThere) {
    fs::create_directory(folder_.Path() / "package");
    folder_.Write("package/IMAGE100.WQFML", SmallModel5());
    folder_.Write("a.wqf", Packed(SmallModel5()));
    fs::create_symlink("../a.wqf", folder_.Path() / "package/link.wqf");
    fs::create_symlink(folder_ / "a.wqf", folder_.Path() / "absolute.wqf");
    for (const char* name : {"package", "package/link.wqf", "absolute.wqf", "package/../a.wqf"}) {
        EXPECT_EQ(Imported(folder_ / name), kSmallModelText) << name;
    }
    EXPECT_EQ(Imported(folder_ / "missing.wqf"), "");
    EXPECT_EQ(Imported("/dev/null"), "");

    const Attributes attributes = NewAttributes();
    EXPECT_FALSE(GetMetadataForFile(nullptr, attributes.Get(), nullptr, nullptr));
    EXPECT_FALSE(GetMetadataForFile(nullptr, nullptr, nullptr, CFSTR("/")));
    EXPECT_EQ(CFDictionaryGetCount(attributes.Get()), 0);
}

TEST_F(ImportTest, LeavesDocumentsAsTheyAre) {
    const std::string packed = ArchiveBuilder().Deflated("IMAGE100.WQFML", SmallModel5()).Bytes();
    const std::string path = folder_.Write("a.wqf", packed);
    const auto state = [&] {
        struct stat now = {};
        EXPECT_EQ(stat(path.c_str(), &now), 0);
        return std::vector<std::int64_t>{static_cast<std::int64_t>(now.st_ino), now.st_mtim.tv_sec, now.st_mtim.tv_nsec,
                                         now.st_ctim.tv_sec, now.st_ctim.tv_nsec};
    };
    for (const auto& [file, folder] : {std::pair(0644U, 0755U), std::pair(0444U, 0555U)}) {
        fs::permissions(path, fs::perms(file));
        fs::permissions(folder_.Path(), fs::perms(folder));
        const auto before = state();
        EXPECT_EQ(Imported(path), kSmallModelText);
        EXPECT_EQ(state(), before);
        EXPECT_EQ(folder_.Read("a.wqf"), packed);
    }
}

// The bundle's copy of the code and the program's have a registry each; in one copy, calls take turns.
TEST_F(ImportTest, ServesSeveralThreadsInTurn) {
    const std::string path = folder_.Write("a.wqf", Packed(SmallModel5()));
    std::vector<std::string> results(4);
    std::vector<std::thread> threads;
    for (std::string& result : results) {
        threads.emplace_back([&] {
            for (int i = 0; i < 25; ++i) {
                const Attributes attributes = NewAttributes();
                const bool imported = GetMetadataForFile(nullptr, attributes.Get(), nullptr, PathString(path).Get());
                result = imported && Imported(path) == kSmallModelText ? TextOf(attributes) : "failed";
                if (result != kSmallModelText) return;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (const std::string& result : results) EXPECT_EQ(result, kSmallModelText);
}

// Each of its allocations fails in turn.
TEST_F(ImportTest, EndsWithoutATraceWhenMemoryRunsOut) {
    const std::string path = folder_.Write("a.wqf", ArchiveBuilder().Deflated("IMAGE100.WQFML", SmallModel5()).Bytes());
    const Foundation::CFPointer<CFStringRef> text = PathString(path);
    long failures = 0;
    for (bool imported = false; !imported; ++failures) {
        ASSERT_LT(failures, 100000);
        const Attributes attributes = NewAttributes();
        allocationsLeft = failures;
        imported = GetMetadataForFile(nullptr, attributes.Get(), nullptr, text.Get());
        allocationsLeft = kNoAllocationFails;
        ASSERT_EQ(CFDictionaryGetCount(attributes.Get()), imported ? 7 : 0) << "allocation " << failures;
    }
    EXPECT_GT(failures, 100);  // so many allocations were really tried

    const Attributes attributes = NewAttributes();
    EXPECT_TRUE(GetMetadataForFile(nullptr, attributes.Get(), nullptr, text.Get()));
    EXPECT_EQ(TextOf(attributes), kSmallModelText);
}

TEST(StoragePath, PutsTheVolumeInPlaceOfTheRoot) {
    const struct {
        const char* path;
        const char* storagePath;
    } rows[] = {
        {"/folder/a.wqf", "file/folder/a.wqf"},
        {"//folder/./a.wqf/", "file/folder/a.wqf"},
        {"/no/such/../a.wqf", "file/no/a.wqf"},
        {"/Größe.wqf", "file/Größe.wqf"},
        {"/", "file"},
    };
    for (const auto& row : rows) EXPECT_EQ(StoragePath(row.path), row.storagePath);
}

TEST(StoragePath, StartsARelativePathAtTheCurrentFolder) {
    const TemporaryFolder folder;
    const fs::path before = fs::current_path();
    fs::current_path(folder.Path());
    const std::string path = StoragePath("sub/a.wqf");
    const std::string ofNothing = StoragePath("");
    fs::current_path(before);
    EXPECT_EQ(path, "file" + (folder / "sub/a.wqf"));
    EXPECT_EQ(ofNothing, "file" + folder.Path().string());
}

TEST(StoragePath, FollowsALinkOnce) {
    const TemporaryFolder folder;
    const std::string root = folder.Path().string();
    fs::create_directories(root + "/real/deep");
    folder.Write("real/a.wqf", "x");
    fs::create_directory_symlink("real/deep", root + "/short");
    const struct {
        const char* what;
        const char* link;
        std::string destination;
        std::string storagePath;
    } rows[] = {
        {"an absolute destination", "absolute.wqf", root + "/real/a.wqf", "file//" + root + "/real/a.wqf"},
        {"a relative one starts at the link's folder", "relative.wqf", "real/a.wqf", "file//" + root + "/real/a.wqf"},
        {"and climbs from where that folder really is", "short/up.wqf", "../a.wqf", "file//" + root + "/real/a.wqf"},
        {"a link to a link stops there", "second.wqf", "relative.wqf", "file//" + root + "/relative.wqf"},
        {"a destination is never a home folder", "home.wqf", "~/a.wqf", "file//" + root + "/~/a.wqf"},
        {"one that leads nowhere", "dangling.wqf", "gone.wqf", "file//" + root + "/gone.wqf"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        fs::create_symlink(row.destination, folder.Path() / row.link);
        EXPECT_EQ(StoragePath(folder / row.link), row.storagePath);
    }
}

}  // namespace ZEMA::testing

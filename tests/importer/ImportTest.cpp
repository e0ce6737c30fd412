// Whole documents through the bundle, loaded at run time, and through the exported function itself.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <thread>
#include <vector>

#include "host/documents/DocumentCheck.h"
#include "host/plugin/PluginHost.h"
#include "importer/MetadataImporterPlugin.h"
#include "tests/importer/Attributes.h"
#include "tests/support/ArchiveBuilder.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

namespace {

namespace fs = std::filesystem;

constexpr const char* kModel4 =
    R"(<WQFML versionMajor="4"><Scene><Model><Group refID="1"><Part refID="1" designID="42" materialID="21"/></Group></Model></Scene></WQFML>)";

class Import : public ::testing::Test {
protected:
    // The attributes as text, or "not imported"; then there must be none.
    std::string Imported(const std::string& path) const {
        const Attributes attributes = NewAttributes();
        if (host_->Import(PathString(path).Get(), attributes.Get())) return TextOf(attributes);
        EXPECT_EQ(CFDictionaryGetCount(attributes.Get()), 0);
        return "not imported";
    }

    std::string problem_;
    const std::unique_ptr<PluginHost> host_ = PluginHost::Load(ZEMA_BUNDLE, problem_);
    const TemporaryFolder folder_;
};

}  // namespace

TEST_F(Import, TellsDocumentsByTheirContents) {
    ASSERT_TRUE(host_) << problem_;
    const std::string model = SmallModel5();
    const struct {
        const char* what;
        const char* name;
        std::string bytes;
        std::string imported;
        const char* reason;  // when it is not imported
    } rows[] = {
        {"a bare model", "bare.wqfml", model, kSmallModelText, ""},
        {"a bare model, whatever its name", "bare.txt", model, kSmallModelText, ""},
        {"a stored member", "a.wqf", ArchiveBuilder().Stored("IMAGE100.WQFML", model).Bytes(), kSmallModelText, ""},
        {"a deflated member among others", "b.wqf",
         ArchiveBuilder().Folder("t/").Stored("t/a.png", "x").Deflated("IMAGE100.WQFML", model).Comment("hi").Bytes(),
         kSmallModelText, ""},
        {"a member named in another case", "c.wqf", ArchiveBuilder().Deflated("image100.wqfML", model).Bytes(),
         kSmallModelText, ""},
        {"an archive without the model", "d.wqf", ArchiveBuilder().Stored("IMAGE200.WQFML", model).Bytes(),
         "not imported", "pathError path file/ROOT/d.wqf/IMAGE100.WQFML"},
        {"the model in a folder of the archive", "e.wqf", ArchiveBuilder().Stored("x/IMAGE100.WQFML", model).Bytes(),
         "not imported", "pathError path file/ROOT/e.wqf/IMAGE100.WQFML"},
        {"an empty model member", "f.wqf", ArchiveBuilder().Stored("IMAGE100.WQFML", "").Bytes(), "not imported",
         "unknown error detail empty"},
        {"a damaged archive is not even a model", "g.wqf",
         ArchiveBuilder().Stored("IMAGE100.WQFML", model).Bytes().erase(100, 1), "not imported", "parserError"},
        {"a damaged member", "n.wqf", ArchiveBuilder().Stored("IMAGE100.WQFML", model).Build().Set32(0, 0).bytes,
         "not imported", "pathError path file/ROOT/n.wqf/IMAGE100.WQFML"},
        {"a model without the section that it needs", "o.wqf", Model5("<Meta/>"), "not imported",
         "the model is not complete, and the loader names no error"},
        {"no markup", "h.wqf", "garbage", "not imported", "parserError"},
        {"another markup", "i.wqf", "<html/>", "not imported", "unknown error detail missingWQFMLTag"},
        {"a version that nobody reads", "j.wqf", R"(<WQFML versionMajor="6"/>)", "not imported",
         "versionError expected Version 4 actual Version 6"},
        {"an error of the content is not tried in format 4", "k.wqf", Model5("<Bricks><Brick refID=\"1\"/></Bricks>"),
         "not imported", "brickError error detail missingDesignID"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const std::string path = folder_.Write(row.name, row.bytes);
        EXPECT_EQ(Imported(path), row.imported);
        if (row.imported != "not imported") continue;
        std::string reason = row.reason;
        const std::size_t root = reason.find("/ROOT");
        if (root != std::string::npos) reason.replace(root, 5, folder_.Path().string());
        EXPECT_EQ(FailureReasonOf(path).substr(0, reason.size()), reason);
    }
}

TEST_F(Import, ReadsFormat4WhereFormat5GivesUp) {
    ASSERT_TRUE(host_) << problem_;
    const std::string path = folder_.Write("old.wqf", ArchiveBuilder().Deflated("IMAGE100.WQFML", kModel4).Bytes());
    EXPECT_EQ(Imported(path),
              R"({"com_zema_wqf_listofbricks":["42"],"com_zema_wqf_numberofbricks":1,"kMDItemVersion":"4"})");
    const DocumentCheck check = CheckDocument(path);
    ASSERT_EQ(check.attempts.size(), 2u);
    EXPECT_EQ(check.attempts[0].format, 5u);
    EXPECT_EQ(check.attempts[0].errorMask, 2u);
    EXPECT_EQ(check.attempts[1].format, 4u);
    EXPECT_EQ(check.version, "4");
}

TEST_F(Import, FollowsLinksAndFolders) {
    ASSERT_TRUE(host_) << problem_;
    fs::create_directory(folder_.Path() / "package");
    folder_.Write("package/IMAGE100.WQFML", SmallModel5());
    folder_.Write("a.wqf", ArchiveBuilder().Deflated("IMAGE100.WQFML", SmallModel5()).Bytes());
    fs::create_symlink("../a.wqf", folder_.Path() / "package/link.wqf");
    fs::create_symlink(folder_ / "a.wqf", folder_.Path() / "absolute.wqf");
    for (const char* name : {"package", "package/link.wqf", "absolute.wqf", "package/../a.wqf"}) {
        EXPECT_EQ(Imported(folder_ / name), kSmallModelText) << name;
    }
    EXPECT_EQ(Imported(folder_ / "missing.wqf"), "not imported");
    EXPECT_EQ(Imported("/dev/null"), "not imported");
}

TEST_F(Import, LeavesDocumentsAsTheyAre) {
    ASSERT_TRUE(host_) << problem_;
    const std::string packed = ArchiveBuilder().Deflated("IMAGE100.WQFML", SmallModel5()).Bytes();
    for (const fs::perms mode : {fs::perms(0644), fs::perms(0444)}) {
        const std::string path = folder_.Write("a.wqf", packed);
        fs::permissions(path, mode);
        fs::permissions(folder_.Path(), mode == fs::perms(0444) ? fs::perms(0555) : fs::perms(0755));
        struct stat before, after;
        ASSERT_EQ(stat(path.c_str(), &before), 0);
        EXPECT_EQ(Imported(path), kSmallModelText);
        ASSERT_EQ(stat(path.c_str(), &after), 0);
        EXPECT_EQ(folder_.Read("a.wqf"), packed);
        EXPECT_EQ(before.st_ino, after.st_ino);
        EXPECT_EQ(before.st_mtim.tv_sec, after.st_mtim.tv_sec);
        EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
        EXPECT_EQ(before.st_ctim.tv_nsec, after.st_ctim.tv_nsec);
        fs::permissions(folder_.Path(), fs::perms(0755));
    }
}

// The bundle's copy of the code and the program's have a registry each; in one copy, calls take turns.
TEST_F(Import, ServesSeveralThreadsInTurn) {
    ASSERT_TRUE(host_) << problem_;
    const std::string path = folder_.Write("a.wqf", ArchiveBuilder().Deflated("IMAGE100.WQFML", SmallModel5()).Bytes());
    std::vector<std::string> results(4);
    std::vector<std::thread> threads;
    for (std::string& result : results) {
        threads.emplace_back([&] {
            for (int i = 0; i < 25; ++i) {
                const Attributes attributes = NewAttributes();
                const bool imported = GetMetadataForFile(nullptr, attributes.Get(), nullptr, PathString(path).Get());
                const Attributes others = NewAttributes();
                result =
                    imported && host_->Import(PathString(path).Get(), others.Get()) ? TextOf(attributes) : "failed";
                if (result != kSmallModelText) return;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (const std::string& result : results) EXPECT_EQ(result, kSmallModelText);
}

TEST(GetMetadataForFile, RefusesWhatIsNotThere) {
    const Attributes attributes = NewAttributes();
    EXPECT_FALSE(GetMetadataForFile(nullptr, attributes.Get(), nullptr, nullptr));
    EXPECT_FALSE(GetMetadataForFile(nullptr, nullptr, nullptr, CFSTR("/")));
    EXPECT_FALSE(GetMetadataForFile(nullptr, attributes.Get(), nullptr, CFSTR("")));
    EXPECT_EQ(CFDictionaryGetCount(attributes.Get()), 0);
}

}  // namespace ZEMA::testing

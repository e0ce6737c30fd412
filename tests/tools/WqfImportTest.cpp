// wqf import as a process: what it prints, what it says, and how it ends.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>

#include "host/system/Utf8Text.h"
#include "tests/support/ArchiveBuilder.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tools/Process.h"

namespace ZEMA::testing {

namespace {

namespace fs = std::filesystem;

constexpr const char* kModel = R"(<WQFML versionMajor="5"><Meta><Author name="Zo&#235;"/></Meta><Bricks/></WQFML>)";
constexpr const char* kAttributes =
    R"({"kMDItemVersion":"5","kMDItemAuthors":["Zoë"],"com_zema_wqf_numberofbricks":0,"com_zema_wqf_listofbricks":[]})";

std::string Archive() {
    return ArchiveBuilder().Deflated("IMAGE100.WQFML", kModel).Bytes();
}

std::string Imported(const std::string& path, const std::string& pathBytes = "") {
    return R"({"path":")" + path + pathBytes + R"(","imported":true,"attributes":)" + kAttributes + "}";
}

std::string NotImported(const std::string& path, const std::string& error) {
    return R"({"path":")" + path + R"(","imported":false,"attributes":{},"error":")" + error + R"("})";
}

class WqfImport : public ::testing::Test {
protected:
    const TemporaryFolder folder_;
    const std::string good_ = folder_.Write("good.wqf", Archive());
    const std::string bare_ = folder_.Write("bare.wqfml", kModel);
};

}  // namespace

TEST_F(WqfImport, PrintsOneObjectForEachInput) {
    ASSERT_EQ(mkfifo((folder_ / "pipe.wqf").c_str(), 0666), 0);
    fs::create_directory(folder_.Path() / "empty");
    fs::create_symlink("good.wqf", folder_.Path() / "link");
    const std::string slashed = good_ + "//";
    const std::string garbage = folder_.Write("line\nbreak.wqf", "garbage");
    const std::string foreign = folder_.Write("\xE9.wqf", Archive());
    const std::string packed = folder_.Write("\xE9", ArchiveBuilder().Deflated("x.wqf", Archive()).Bytes()) + "/x.wqf";
    const std::string root = folder_.Path().string();
    const Result result = Wqf({"import", "-q", "--format=ndjson", slashed, folder_ / "gone.wqf", folder_ / "pipe.wqf",
                               folder_ / "empty", bare_, folder_ / "link", garbage, foreign, packed, "/dev/null"});
    EXPECT_EQ(result.exit, 1);
    const std::string reason = "it is neither a ZIP archive nor a model (parserError)";
    const std::string shown = root + "/\xEF\xBF\xBD";
    const std::string expected = Imported(slashed) + "\n" + NotImported(root + "/gone.wqf", "no such file") + "\n" +
                                 NotImported(root + "/pipe.wqf", "is a pipe, not a regular file") + "\n" +
                                 Imported(bare_) + "\n" + Imported(root + "/link") + "\n" +
                                 NotImported(root + "/line\\nbreak.wqf", reason) + "\n" +
                                 Imported(shown + ".wqf", R"(","pathBytes":")" + Base64Of(foreign)) + "\n" +
                                 Imported(shown + "/x.wqf", R"(","pathBytes":")" + Base64Of(packed)) + "\n" +
                                 NotImported("/dev/null", "is a device, not a regular file") + "\n";
    EXPECT_EQ(result.out, expected);
    EXPECT_EQ(result.pieces, 9) << "records written in parts could be torn apart by another writer of the pipe";
    EXPECT_EQ(result.err, "wqf: " + root + "/empty: there are no documents in this folder\n" + "wqf: " + root +
                              "/gone.wqf: no such file\n" + "wqf: " + root +
                              "/pipe.wqf: is a pipe, not a regular file\n" + "wqf: " + root +
                              "/line\\u000Abreak.wqf: " + reason +
                              "\nwqf: /dev/null: is a device, not a regular file\n");
}

// An archive that is mounted for changes becomes one if it was empty, and so would a member.
TEST_F(WqfImport, WritesNothingIntoEmptyFiles) {
    folder_.Write("empty", "");
    const std::string bytes = ArchiveBuilder().Stored("empty.wqf", "").Bytes();
    const std::string pack = folder_.Write("pack.zip", bytes);
    const Result result = Wqf({"import", folder_ / "empty", pack + "/empty.wqf", folder_ / "empty/a.wqf"});
    EXPECT_EQ(result.err, "wqf: " + (folder_ / "empty") + ": it is empty\nwqf: " + pack +
                              "/empty.wqf: it is empty\nwqf: " + (folder_ / "empty/a.wqf") +
                              ": is no folder and no archive (pathError path a.wqf)\n");
    EXPECT_EQ(folder_.Read("empty"), "");
    EXPECT_EQ(folder_.Read("pack.zip"), bytes);
}

TEST_F(WqfImport, PrintsEveryFormat) {
    const Result text = Wqf({"import", good_});
    EXPECT_EQ(text.exit, 0);
    EXPECT_EQ(text.out.substr(0, text.out.find('\n')), "com_zema_wqf_listofbricks   = (");
    EXPECT_EQ(Wqf({"import", "--", good_, folder_ / "gone", bare_}).out,
              good_ + ":\n" + text.out + "\n" + bare_ + ":\n" + text.out);
    EXPECT_EQ(Wqf({"import", "--format", "json", good_}).out, "[\n" + Imported(good_) + "\n]\n");
    EXPECT_EQ(Wqf({"import", "--format", "plist", good_}).out.substr(0, 5), "<?xml");
}

TEST_F(WqfImport, ReadsListsOfPathsAndSearchesFolders) {
    fs::create_directories(folder_.Path() / "sub/.deep");
    folder_.Write("sub/.deep/b.WQF", Archive());
    folder_.Write("sub/a.wqf", Archive());
    const std::string list = folder_ / "sub" + std::string(1, '\0') + good_ + std::string(1, '\0');
    const std::string expected =
        Imported(folder_ / "sub/.deep/b.WQF") + "\n" + Imported(folder_ / "sub/a.wqf") + "\n" + Imported(good_) + "\n";
    EXPECT_EQ(Wqf({"import", "--format=ndjson", "--files0-from", "-"}, list).out, expected);
    EXPECT_EQ(Wqf({"import", "--format=ndjson", "--files0-from=" + folder_.Write("list", list)}).out, expected);

    const Result none = Wqf({"import", "--format=json", "--files0-from", "-"}, "");
    EXPECT_EQ(none.exit, 0);
    EXPECT_EQ(none.out, "[]\n");
    fs::create_directory(folder_.Path() / "empty");
    EXPECT_EQ(Wqf({"import", folder_ / "empty"}).exit, 0);
}

// The option parser has meanings of its own for some of these.
TEST_F(WqfImport, TakesFilesOfAnyName) {
    std::string line = "cd '" + folder_.Path().string() + "' && ";
    std::string expected;
    for (const char* name : {"++", "{}", "[a]", "a,b", "import", "help", " ", "%%", "-x.wqf", "--"}) {
        folder_.Write(name, Archive());
        expected += Imported(name) + "\n";
    }
    const Result result =
        Shell(line + "\"$WQF\" import --format ndjson ++ '{}' '[a]' a,b import help ' ' %% -- -x.wqf --");
    EXPECT_EQ(result.out, expected);
    EXPECT_EQ(result.exit, 0) << result.err;
    for (const char* alone : {"{}", "[a]", "''"}) {
        EXPECT_EQ(Shell(line + "\"$WQF\" import --format ndjson " + alone + " | wc -l").out, "1\n") << alone;
    }
}

TEST_F(WqfImport, EndsQuietlyWhenNobodyReads) {
    // Enough records to fill any pipe.
    std::string paths;
    for (int i = 0; i < 3000; ++i) paths += folder_ / "no such document" + std::string(1, '\0');
    folder_.Write("list", paths);
    const Result result = Shell("{ \"$WQF\" import --format ndjson --files0-from '" + (folder_ / "list") + "' 2>'" +
                                (folder_ / "err") + "'; echo $? >'" + (folder_ / "status") + "'; } | head -n 1");
    EXPECT_EQ(result.out, NotImported(folder_ / "no such document", "no such file") + "\n");
    EXPECT_EQ(folder_.Read("status"), std::to_string(128 + SIGPIPE) + "\n");
    EXPECT_EQ(folder_.Read("err").find("standard output"), std::string::npos);

    const Result full = Shell("\"$WQF\" import '" + good_ + "' >/dev/full");
    EXPECT_EQ(full.exit, 1);
    EXPECT_EQ(full.err, "wqf: standard output: no space left on device\n");
    const Result closed = Shell("\"$WQF\" import '" + good_ + "' >&-");
    EXPECT_EQ(closed.exit, 1);
    EXPECT_EQ(closed.err, "wqf: standard output: bad file descriptor\n");
    EXPECT_EQ(folder_.Read("good.wqf"), Archive());
}

TEST_F(WqfImport, LoadsTheBundleThatItIsTold) {
    fs::copy(ZEMA_BUNDLE, folder_ / "Other.mdimporter", fs::copy_options::recursive);
    const std::string module = folder_ / "Other.mdimporter/Contents/Linux/WQFImporter";
    fs::remove(module);
    const Result broken = Wqf({"import", "--bundle", folder_ / "Other.mdimporter", good_});
    EXPECT_EQ(broken.exit, 2);
    EXPECT_EQ(broken.err, "wqf: " + module + ": no such file\n");

    fs::copy(ZEMA_STRANGE_MODULE, module);
    std::string info = folder_.Read("Other.mdimporter/Contents/Info.plist");
    const std::string function = "MetadataImporterPluginFactory";
    info.replace(info.find(function), function.size(), "LeavesAnInstance");
    folder_.Write("Other.mdimporter/Contents/Info.plist", info);
    const Result leaking = Wqf({"import", "--bundle", folder_ / "Other.mdimporter", good_});
    EXPECT_EQ(leaking.exit, 1);
    EXPECT_EQ(leaking.err, "wqf: " + module + ": the plug-in left 1 instances behind\n");
}

// As installed: the program finds the bundle under lib/wqf beside its own folder.
TEST_F(WqfImport, FindsTheInstalledBundle) {
    fs::create_directories(folder_.Path() / "bin");
    fs::create_directories(folder_.Path() / "lib/wqf");
    const std::string program = folder_ / "bin/wqf";
    fs::copy(ZEMA_PROGRAM, program);
    fs::copy(ZEMA_PLATFORM, folder_.Path() / "lib/wqf");
    const std::string import = "'" + program + "' import --format ndjson '" + good_ + "'";
    EXPECT_EQ(Shell(import).exit, 2);
    fs::copy(ZEMA_BUNDLE, folder_ / "lib/wqf/WQFImporter.mdimporter", fs::copy_options::recursive);
    EXPECT_EQ(Shell(import).out, Imported(good_) + "\n");
}

}  // namespace ZEMA::testing

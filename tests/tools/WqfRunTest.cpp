// wqf import and check over many documents: workers, limits, and what they leave behind.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "host/system/Sanitizers.h"
#include "tests/support/ArchiveBuilder.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tools/Process.h"

namespace ZEMA::testing {

namespace {

namespace fs = std::filesystem;

constexpr const char* kModel = R"(<WQFML versionMajor="5"><Meta><Author name="Ada"/></Meta><Bricks/></WQFML>)";

class WqfRun : public ::testing::Test {
protected:
    std::string Document(const std::string& name) const {
        return folder_.Write(name, ArchiveBuilder().Deflated("IMAGE100.WQFML", kModel).Bytes());
    }

    // A bundle whose importer crashes and hangs as paths say.
    std::string TroubledBundle() const {
        const std::string bundle = folder_ / "Trouble.mdimporter";
        fs::copy(ZEMA_BUNDLE, bundle, fs::copy_options::recursive);
        for (const auto& item : fs::recursive_directory_iterator(bundle)) {
            if (item.path().filename() == "WQFImporter")
                fs::copy(ZEMA_STRANGE_MODULE, item.path(), fs::copy_options::overwrite_existing);
        }
        std::string info = folder_.Read("Trouble.mdimporter/Contents/Info.plist");
        const std::string function = "MetadataImporterPluginFactory";
        info.replace(info.find(function), function.size(), "MakesTrouble");
        folder_.Write("Trouble.mdimporter/Contents/Info.plist", info);
        return bundle;
    }

    const TemporaryFolder folder_;
};

// Watches a folder for whatever changes a file in it.
class Watch {
public:
    explicit Watch(const fs::path& folder) : descriptor_(inotify_init1(IN_NONBLOCK)) {
        inotify_add_watch(descriptor_, folder.c_str(),
                          IN_CLOSE_WRITE | IN_MODIFY | IN_ATTRIB | IN_CREATE | IN_DELETE | IN_MOVE);
    }
    ~Watch() { close(descriptor_); }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    bool SawNothing() const {
        char events[4096];
        return read(descriptor_, events, sizeof events) < 0 && errno == EAGAIN;
    }

private:
    int descriptor_;
};

std::vector<std::int64_t> TimesOf(const std::string& path) {
    struct stat status = {};
    stat(path.c_str(), &status);
    return {status.st_atim.tv_sec, status.st_atim.tv_nsec, status.st_mtim.tv_sec, status.st_mtim.tv_nsec,
            status.st_ctim.tv_sec, status.st_ctim.tv_nsec, status.st_size};
}

}  // namespace

TEST_F(WqfRun, SaysTheSameByAnyNumberOfWorkers) {
    fs::create_directory(folder_.Path() / "sub");
    for (int i = 0; i < 40; ++i) {
        const std::string name = "sub/" + std::to_string(i) + ".wqf";
        if (i % 3 == 0) {
            folder_.Write(name, "no document");
        } else {
            Document(name);
        }
    }
    const std::vector<std::vector<std::string>> commands = {{"import"},
                                                            {"import", "--format", "json"},
                                                            {"import", "--format", "plist"},
                                                            {"check"},
                                                            {"check", "--format", "json"}};
    for (std::vector<std::string> command : commands) {
        command.insert(command.end(), {"-q", folder_ / "sub", folder_ / "gone", "--jobs", "1"});
        const Result one = Wqf(command);
        EXPECT_EQ(one.exit, 1);
        for (const char* jobs : {"2", "8"}) {
            command.back() = jobs;
            const Result several = Wqf(command);
            EXPECT_EQ(several.out, one.out) << command[0] << " " << jobs;
            EXPECT_EQ(several.err, one.err) << command[0] << " " << jobs;
            EXPECT_EQ(several.exit, 1);
        }
    }
    const std::string err = Wqf({"import", folder_ / "sub"}).err;
    EXPECT_NE(err.find("\nwqf: 40 documents, 14 failed, in "), std::string::npos) << err;
}

TEST_F(WqfRun, LeavesDocumentsAsTheyAre) {
    const std::vector<std::string> paths = {Document("a.wqf"), folder_.Write("b.wqfml", kModel),
                                            folder_.Write("empty.wqf", ""), folder_.Write("bad.wqf", "PK\3\4")};
    std::vector<std::vector<std::int64_t>> before;
    for (const std::string& path : paths) {
        // An access that is older than the change would be set by any reading.
        const timespec times[] = {{1000, 0}, {2000, 0}};
        utimensat(AT_FDCWD, path.c_str(), times, 0);
        before.push_back(TimesOf(path));
    }
    const Watch watch(folder_.Path());
    for (const char* command : {"import", "check"}) {
        std::vector<std::string> several = {command};
        several.insert(several.end(), paths.begin(), paths.end());
        Wqf(several);
        for (const std::string& path : paths) Wqf({command, path});
    }
    for (const std::string& path : paths) Wqf({"scene", path});
    for (std::size_t i = 0; i < paths.size(); ++i) EXPECT_EQ(TimesOf(paths[i]), before[i]) << paths[i];
    EXPECT_TRUE(watch.SawNothing());
}

// One document is read without a worker, and fails in the same words as among others.
TEST_F(WqfRun, BearsDocumentsThatCrashOrHang) {
    const std::string bundle = TroubledBundle();
    const struct {
        const char* name;
        const char* reason;
    } rows[] = {{"crash.wqf", "reading it crashed (Aborted)"}, {"hang.wqf", "it takes longer than 1 s"}};
    for (const auto& row : rows) {
        const std::string bad = Document(row.name);
        const std::vector<std::string> command = {"import", "--bundle",       bundle,   "--timeout",
                                                  "1",      "--format",       "ndjson", Document("a.wqf"),
                                                  bad,      Document("b.wqf")};
        const std::string object =
            R"({"path":")" + bad + R"(","imported":false,"attributes":{},"error":")" + row.reason + "\"}\n";
        const std::string message = "wqf: " + bad + ": " + row.reason + "\n";
        const Result several = Wqf(command);
        EXPECT_EQ(several.exit, 1);
        EXPECT_EQ(several.err, message);
        EXPECT_NE(several.out.find("\n" + object + "{"), std::string::npos) << several.out;
        if (kUnderSanitizers && bad.ends_with("crash.wqf")) continue;
        const Result alone = Wqf({"import", "--bundle", bundle, "--timeout=1", "--format=ndjson", bad});
        EXPECT_EQ(alone.exit, 1);
        EXPECT_EQ(alone.out, object);
        EXPECT_EQ(alone.err, message);
    }
}

// Without the sanitizers, which take memory of their own.
TEST_F(WqfRun, GivesADocumentNoMoreThanItsMemory) {
    if (kUnderSanitizers) GTEST_SKIP() << "there is no limit beside the sanitizers";
    const std::string large = folder_.Write("large.wqfml", R"(<WQFML versionMajor="5"><Meta><Author name=")" +
                                                               std::string(40 << 20, 'x') + R"("/></Meta></WQFML>)");
    for (const std::vector<std::string>& others :
         {std::vector<std::string>{}, {Document("a.wqf"), Document("b.wqf")}}) {
        std::vector<std::string> command = {"import", "--memory-limit", "64", large};
        command.insert(command.end(), others.begin(), others.end());
        const Result result = Wqf(command);
        EXPECT_EQ(result.exit, 1);
        EXPECT_NE(result.err.find("memory"), std::string::npos) << result.err;
        EXPECT_EQ(result.err.find("b.wqf"), std::string::npos) << result.err;
    }
}

TEST_F(WqfRun, TakesNumbersThatMakeSense) {
    const std::string path = Document("a.wqf");
    for (const char* option :
         {"--jobs=0", "--jobs=-1", "--jobs=x", "--timeout=1s", "--memory-limit=0", "--memory-limit="}) {
        EXPECT_EQ(Wqf({"import", option, path}).exit, 2) << option;
    }
    EXPECT_EQ(Wqf({"check", "--jobs=3", "--timeout=0", "--memory-limit=100", path}).exit, 0);
}

}  // namespace ZEMA::testing

// Runs over folders: what is read, what is left alone, what stays although it is not found.

#include "host/index/IndexRun.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "host/index/IndexFile.h"
#include "host/index/IndexSearch.h"
#include "host/system/FileDescriptor.h"
#include "host/system/Paths.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

namespace {

namespace fs = std::filesystem;

// A document is its author's name; "bad" fails for good, "late" for now.
DocumentRecord ReadDocument(const FoundDocument& document) {
    DocumentRecord record;
    record.path = document.path;
    const Result<std::string> author = ReadRegularFile(document.path, 100);
    record.passing = author && *author == "late";
    record.imported = author && *author != "bad" && *author != "late";
    if (record.imported) record.attributes = {{"kMDItemAuthors", {Value::List{{*author}}}}};
    if (!record.imported) record.error = "it is bad";
    return record;
}

class IndexRun : public ::testing::Test {
protected:
    // Written long ago, as far as the change of its times tells. Only a clock that is set could make them older.
    void Write(const std::string& name, const std::string& author) {
        fs::create_directories(fs::path(models_ + "/" + name).parent_path());
        folder_.Write("models/" + name, author);
    }

    // What a run says: documents found, read, and whatever is not 0 besides.
    std::string Update(std::vector<std::string> folders, const std::string& program = "1") {
        Result<DocumentWorkers> workers = DocumentWorkers::Start(&ReadDocument, WorkerOptions());
        IndexRunOptions options{std::move(folders), program, [](const auto&, const auto&) {},
                                [](std::size_t, std::size_t, std::size_t) {}};
        const Result<std::unique_ptr<Database>> database = OpenIndexForWriting(index_);
        if (!database) return database.Why().text;
        const Result<IndexRunReport> report = UpdateIndex(**database, *workers, options);
        if (!report) return report.Why().text;
        std::string text = std::to_string(report->found) + " found, " + std::to_string(report->read) + " read";
        for (const auto& [count, what] : {std::pair(report->failed, "failed"),
                                          {report->moved, "moved"},
                                          {report->removed, "removed"},
                                          {report->away, "away"},
                                          {report->foldersFailed, "folders failed"}}) {
            if (count != 0) text += ", " + std::to_string(count) + " " + what;
        }
        return text;
    }

    // Takes from every document in the index what makes the next run read it again only because it was young.
    void Settle() { Change("UPDATE documents SET settled = 1"); }

    void Change(const char* sql) {
        const Result<std::unique_ptr<Database>> database = OpenIndexForWriting(index_);
        (*database)->Run(sql);
        EXPECT_FALSE((*database)->Failed()) << (*database)->Why().text;
    }

    // The hits' paths below the folder, with blanks between them.
    std::string Found(const std::string& query) {
        const Result<std::unique_ptr<Database>> database = OpenIndexForReading(index_);
        if (!database) return database.Why().text;
        Hits hits(**database, *ParseQuery(query).query, HitOrder::Relevance);
        std::string names;
        for (std::size_t i = 0; i < hits.Count(); ++i)
            names += (names.empty() ? "" : " ") + hits.Path(i).substr(models_.size() + 1);
        return names;
    }

    const TemporaryFolder folder_;
    const std::string models_ = folder_ / "models";
    const std::string index_ = folder_ / "home/data/index.db";
};

}  // namespace

TEST_F(IndexRun, ReadsWhatIsNewOrChanged) {
    Write("a.wqf", "ada");
    Write("sub/b.WQFML", "grete");
    Write("notes.txt", "ada");
    EXPECT_EQ(Update({models_}), "2 found, 2 read");
    EXPECT_EQ(Update({models_}), "2 found, 2 read") << "they are too young for their times to tell";
    Settle();
    EXPECT_EQ(Update({}), "2 found, 0 read") << "the folder is known";
    Write("a.wqf", "eda");
    EXPECT_EQ(Update({models_ + "/sub"}), "1 found, 0 read") << "a run touches only what lies below its folders";
    EXPECT_EQ(Update({}), "2 found, 1 read") << "of the same size";
    EXPECT_EQ(Found("ada"), "");
    EXPECT_EQ(Found("author:eda OR author:grete"), "a.wqf sub/b.WQFML");
    Change("UPDATE documents SET settled = 1, changed = 9000000000000000000");
    EXPECT_EQ(Update({}), "2 found, 2 read") << "another time";
}

TEST_F(IndexRun, TriesFailuresAgain) {
    Write("bad.wqf", "bad");
    Write("late.wqf", "ada");
    EXPECT_EQ(Update({models_}), "2 found, 2 read, 1 failed");
    Write("late.wqf", "late");
    Settle();
    EXPECT_EQ(Update({}), "2 found, 1 read, 1 failed");
    Settle();
    EXPECT_EQ(Found("ada is:failed"), "late.wqf") << "what was known of it is kept";
    EXPECT_EQ(Update({}), "2 found, 1 read, 1 failed") << "what may pass is tried in every run";
    EXPECT_EQ(Update({}, "2"), "2 found, 2 read, 2 failed") << "and all failures by another version of the program";
    Write("late.wqf", "eda");
    Write("bad.wqf", "grete");
    EXPECT_EQ(Update({}, "2"), "2 found, 2 read");
    EXPECT_EQ(Found("is:failed OR ada"), "");
}

TEST_F(IndexRun, FollowsWhatIsRenamed) {
    Write("old/a.wqf", "ada");
    Write("old/deep/b.wqf", "grete");
    Write("c.wqf", "emmy");
    Update({models_});
    Settle();
    fs::rename(models_ + "/old", models_ + "/new");
    EXPECT_EQ(Update({}), "3 found, 0 read, 2 moved");
    EXPECT_EQ(Found("path:new"), "new/a.wqf new/deep/b.wqf");
    EXPECT_EQ(Found("path:old"), "");
    fs::create_hard_link(models_ + "/new/a.wqf", models_ + "/d.wqf");
    EXPECT_EQ(Update({}), "4 found, 2 read") << "a second name changes the time of the first";
    EXPECT_EQ(Found("ada"), "d.wqf new/a.wqf");
}

TEST_F(IndexRun, LetsGoOnlyOfWhatHasGone) {
    Write("a.wqf", "ada");
    Write("gone/b.wqf", "grete");
    Write("disk/c.wqf", "emmy");
    Update({models_});
    Settle();
    fs::remove(models_ + "/a.wqf");
    fs::remove_all(models_ + "/gone");
    EXPECT_EQ(Update({}), "1 found, 0 read, 2 removed") << "with its folder too";
    EXPECT_EQ(Found("ada OR grete OR emmy"), "disk/c.wqf");

    // The same folder as if another file system had been seen there.
    const struct {
        const char* what;
        const char* change;
    } rows[] = {
        {"another file system", "UPDATE folders SET filesystem = 'other'"},
        {"another place in it", "UPDATE folders SET filesystem = filesystem, place = '/other'"},
        {"one that cannot be told from others", "UPDATE folders SET filesystem = ''"},
    };
    fs::rename(models_ + "/disk/c.wqf", folder_ / "c.wqf");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Change(row.change);
        EXPECT_EQ(Update({}), "0 found, 0 read, 1 away");
        EXPECT_EQ(Found("is:away emmy"), "disk/c.wqf");
        fs::rename(folder_ / "c.wqf", models_ + "/disk/c.wqf");
        Change("UPDATE documents SET changed = 1");
        EXPECT_EQ(Update({}), "1 found, 1 read") << "back again";
        Settle();
        EXPECT_EQ(Found("is:away"), "");
        fs::rename(models_ + "/disk/c.wqf", folder_ / "c.wqf");
    }
    fs::rename(models_, folder_ / "elsewhere");
    EXPECT_EQ(Update({}), "0 found, 0 read, 1 away, 1 folders failed") << "the folder of the run itself";
    EXPECT_EQ(Update({folder_ / "nowhere"}), "0 found, 0 read, 1 folders failed");
}

TEST_F(IndexRun, StaysOutsideOfCirclesAndTakesAnyName) {
    Write("a.wqf", "ada");
    Write("\xFF/\xE9\n.wqf", "grete");
    fs::create_directory_symlink("..", models_ + "/\xFF/circle");
    fs::create_symlink("a.wqf", models_ + "/link.wqf");
    fs::create_symlink("nothing", models_ + "/dangling.wqf");
    fs::create_directory_symlink(models_, folder_ / "models-link");
    EXPECT_EQ(Update({folder_ / "models-link", models_ + "/\xFF", models_ + "/"}), "3 found, 3 read");
    EXPECT_EQ(Found("NOT is:away"), "a.wqf link.wqf \xFF/\xE9\n.wqf");
}

TEST_F(IndexRun, ForgetsTextsWholly) {
    const std::string secret = "xyzzyquux";
    Write("secret/a.wqf", secret);
    for (int i = 0; i < 50; ++i) Write("b" + std::to_string(i) + ".wqf", "grete" + std::to_string(i));
    Update({models_});
    const auto bytes = [&] {
        std::string all;
        for (const auto& entry : fs::directory_iterator(fs::path(index_).parent_path()))
            all += *ReadRegularFile(entry.path().string(), 1 << 24);
        return all;
    };
    EXPECT_NE(bytes().find(secret), std::string::npos);
    const Result<std::unique_ptr<Database>> database = OpenIndexForWriting(index_);
    EXPECT_EQ(*ForgetFolder(**database, models_ + "/secret"), 1u);
    EXPECT_EQ(bytes().find(secret.substr(1)), std::string::npos);
    EXPECT_EQ(Found("grete17"), "b17.wqf");
    EXPECT_EQ(*ForgetFolder(**database, models_), 50u);
    EXPECT_EQ(Update({}), "0 found, 0 read");
}

TEST_F(IndexRun, LeavesAloneWhatIsNoIndex) {
    fs::create_directories(folder_.Path() / "home/data");
    ASSERT_TRUE(OpenIndexForWriting(folder_ / "other.db"));
    std::string foreign = folder_.Read("other.db");
    foreign.replace(foreign.find("WQFI"), 4, "ELSE");
    const struct {
        const char* what;
        std::string bytes;
    } rows[] = {
        {"a picture", "\x89PNG\r\n\x1A\n" + std::string(200, '\0')},
        {"nothing", ""},
        {"an index of another program", foreign},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        folder_.Write("home/data/index.db", row.bytes);
        EXPECT_EQ(OpenIndexForWriting(index_).Why().kind, FailureKind::WrongKind);
        EXPECT_EQ(OpenIndexForReading(index_).Why().kind, FailureKind::WrongKind);
        EXPECT_EQ(SetIndexAside(index_).Why().kind, FailureKind::WrongKind);
        EXPECT_EQ(folder_.Read("home/data/index.db"), row.bytes);
    }
}

TEST_F(IndexRun, KeepsOthersOutAndNewerOnesWhole) {
    Write("a.wqf", "ada");
    Update({models_});
    struct stat status;
    ASSERT_EQ(stat(index_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    ASSERT_EQ(stat((folder_ / "home/data").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700u);

    // Damaged, but still known by its header.
    std::string bytes = folder_.Read("home/data/index.db");
    ASSERT_GT(bytes.size(), 8192u);
    std::fill(bytes.begin() + 200, bytes.end(), '\xFF');
    folder_.Write("home/data/index.db", bytes);
    EXPECT_EQ(OpenIndexForWriting(index_).Why().kind, FailureKind::Damaged);
    EXPECT_EQ(*SetIndexAside(index_), index_ + ".old");
    EXPECT_EQ(folder_.Read("home/data/index.db.old"), bytes);
    EXPECT_EQ(Update({models_}), "1 found, 1 read");
    Change("PRAGMA user_version = 99");
    EXPECT_EQ(OpenIndexForWriting(index_).Why().kind, FailureKind::Unsupported);
    EXPECT_EQ(OpenIndexForReading(index_).Why().kind, FailureKind::Unsupported);
    EXPECT_EQ(*SetIndexAside(index_), index_ + ".old2");
}

}  // namespace ZEMA::testing

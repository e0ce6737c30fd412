#include "host/workers/DocumentWorkers.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <new>
#include <stdexcept>
#include <thread>

#include "host/system/FileDescriptor.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

namespace {

using std::chrono::milliseconds;

// Does what the name of the document says; whatever is none of these is imported.
DocumentRecord Obey(const FoundDocument& document) {
    const std::string& name = document.path;
    if (name.starts_with("crash")) raise(SIGSYS);
    if (name.starts_with("killed")) raise(SIGKILL);
    if (name.starts_with("leave")) _exit(0);
    if (name.starts_with("hang")) std::this_thread::sleep_for(std::chrono::hours(1));
    if (name.starts_with("throw")) throw std::bad_alloc();
    if (name.starts_with("babble")) (void)WriteAll(3, std::string(100, '\xFF'));  // the first descriptor of a worker
    DocumentRecord record{"another path", true, {}, {}};
    record.attributes.push_back({"process", {std::int64_t{getpid()}}});
    return record;
}

DocumentWorkers StartObeying(unsigned jobs, milliseconds timeout = std::chrono::seconds(60)) {
    WorkerOptions options;
    options.jobs = jobs;
    options.timeout = timeout;
    return std::move(*DocumentWorkers::Start(Obey, options));
}

// The paths must outlive it.
DocumentWorkers::Source SourceOf(const std::vector<std::string>& paths) {
    return [next = paths.begin(), end = paths.end()](FoundDocument& document) mutable {
        if (next == end) return false;
        document = {*next++, {}};
        return true;
    };
}

std::vector<DocumentRecord> RecordsOf(DocumentWorkers& workers, const std::vector<std::string>& paths) {
    std::vector<DocumentRecord> records;
    workers.Run(SourceOf(paths), [&](DocumentRecord record) {
        records.push_back(std::move(record));
        return true;
    });
    return records;
}

std::vector<std::string> Names(std::size_t count, const std::string& start = "good\n") {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < count; ++i) names.push_back(start + std::to_string(i));
    return names;
}

std::int64_t ProcessOf(const DocumentRecord& record) {
    const Value* const process = Find(record.attributes, "process");
    return process == nullptr ? -1 : std::get<std::int64_t>(process->content);
}

// Gone, or a zombie that nobody has asked for yet.
bool HasEnded(std::int64_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string stat;
    return !std::getline(file, stat) || stat.find(") Z ") != std::string::npos;
}

}  // namespace

TEST(DocumentWorkers, LoseTheDocumentThatABadOneIs) {
    const struct {
        const char* name;
        const char* error;
        bool passing;
    } rows[] = {
        {"crash", "reading it crashed (Bad system call)", false},
        {"killed", "the worker that read it was killed", true},
        {"leave", "the worker that read it ended", true},
        {"hang", "it takes longer than 1 s", true},
        {"throw", "out of memory", true},
        {"babble", "the worker that read it went wrong", false},
    };
    for (const unsigned jobs : {1u, 3u}) {
        DocumentWorkers workers = StartObeying(jobs, milliseconds(700));
        std::vector<std::string> paths = Names(20);
        for (const auto& row : rows) {
            paths.push_back(row.name);
            for (const std::string& name : Names(20)) paths.push_back(name);
        }
        const std::vector<DocumentRecord> records = RecordsOf(workers, paths);
        ASSERT_EQ(records.size(), paths.size());
        for (std::size_t i = 0; i < paths.size(); ++i) {
            SCOPED_TRACE(paths[i]);
            EXPECT_EQ(records[i].path, paths[i]);
            const auto* const row = std::find_if(std::begin(rows), std::end(rows),
                                                 [&](const auto& candidate) { return paths[i] == candidate.name; });
            EXPECT_EQ(records[i].imported, row == std::end(rows));
            EXPECT_EQ(records[i].error, row == std::end(rows) ? "" : row->error);
            EXPECT_EQ(records[i].passing, row != std::end(rows) && row->passing);
        }
    }
}

// Waiting without end is what workers do where a file system is dead.
TEST(DocumentWorkers, GiveUpAFileSystemThatDoesNotAnswer) {
    DocumentWorkers workers = StartObeying(1, milliseconds(300));
    const std::vector<DocumentRecord> records = RecordsOf(workers, std::vector<std::string>(50, "hang"));
    ASSERT_EQ(records.size(), 50u);
    EXPECT_EQ(records[1].error, "it takes longer than 1 s");
    EXPECT_EQ(records[49].error, "its file system does not answer");
    EXPECT_TRUE(records[49].passing);
    EXPECT_TRUE(workers.Read({"/proc/elsewhere", {}}).imported);
}

TEST(DocumentWorkers, ServeOneRequestAfterTheOther) {
    DocumentWorkers workers = StartObeying(1);
    const DocumentRecord first = workers.Read({"a", {}});
    EXPECT_EQ(ProcessOf(workers.Read({"b", {}})), ProcessOf(first)) << "a worker stays";
    EXPECT_NE(ProcessOf(first), getpid());
    kill(static_cast<pid_t>(ProcessOf(first)), SIGKILL);
    while (!HasEnded(ProcessOf(first))) std::this_thread::sleep_for(milliseconds(5));
    EXPECT_TRUE(workers.Read({"c", {}}).imported) << "one that died while it had nothing to do costs nothing";
    EXPECT_FALSE(workers.Read({"crash", {}}).imported);
    EXPECT_TRUE(workers.Read({"d", {}}).imported);
}

TEST(DocumentWorkers, StopWhenNobodyWantsMore) {
    DocumentWorkers workers = StartObeying(2);
    std::size_t taken = 0;
    const std::vector<std::string> paths = Names(100);
    workers.Run(SourceOf(paths), [&](const DocumentRecord&) { return ++taken < 10; });
    EXPECT_EQ(taken, 10u);
    const std::vector<DocumentRecord> later = RecordsOf(workers, {"x", "y"});
    ASSERT_EQ(later.size(), 2u);
    EXPECT_EQ(later[0].path + later[1].path, "xy");
}

TEST(DocumentWorkers, FindWhatPathsStandFor) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder.Path() / "full/deep");
    std::filesystem::create_directory(folder.Path() / "empty");
    folder.Write("full/b.wqf", "");
    folder.Write("full/deep/a.wqf", "");
    DocumentWorkers workers = StartObeying(1);
    std::vector<FoundDocument> found;
    std::vector<std::string> empty;
    workers.Find({folder / "gone", folder / "full", folder / "empty", folder / "full/b.wqf"}, found, empty);
    ASSERT_EQ(found.size(), 4u);
    EXPECT_EQ(found[0].failure.kind, FailureKind::Missing);
    EXPECT_EQ(found[1].path, folder / "full/b.wqf");
    EXPECT_EQ(found[2].path, folder / "full/deep/a.wqf");
    EXPECT_EQ(found[3].path, folder / "full/b.wqf");
    EXPECT_EQ(empty, std::vector{folder / "empty"});
}

// Workers have nothing else of what is open here.
TEST(DocumentWorkers, BorrowTheDescriptorThatAPathNames) {
    const TemporaryFolder folder;
    const std::string path = folder.Write("a", "lent");
    const auto work = [](const FoundDocument& document) {
        DocumentRecord record;
        const Result<std::string> bytes = ReadRegularFile(document.path, 100);
        record.imported = static_cast<bool>(bytes);
        record.error = bytes ? *bytes : bytes.Why().text;
        return record;
    };
    const Result<FileDescriptor> early = OpenRegularFile(path);  // its number is that of the worker's socket, there
    DocumentWorkers workers = std::move(*DocumentWorkers::Start(work, {}));
    for (const int number : {early->Get(), 77}) {
        dup2(early->Get(), number);
        EXPECT_EQ(workers.Read({"/dev/fd/" + std::to_string(number), {}}).error, "lent");
        EXPECT_EQ(workers.Read({"/proc/self/fd/" + std::to_string(number), {}}).error, "lent");
    }
    close(77);
    EXPECT_EQ(workers.Read({"/dev/fd/77", {}}).error, "no such file") << "it was lent for one request";
}

// However the program ends.
TEST(DocumentWorkers, EndWithTheProgram) {
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    const pid_t program = fork();
    if (program == 0) {
        DocumentWorkers workers = StartObeying(1);
        const std::int64_t process = ProcessOf(workers.Read({"a", {}}));
        (void)!write(pipe[1], &process, sizeof process);
        (void)workers.Read({"hang", {}});
        _exit(0);
    }
    std::int64_t worker = 0;
    ASSERT_EQ(read(pipe[0], &worker, sizeof worker), static_cast<ssize_t>(sizeof worker));
    EXPECT_FALSE(HasEnded(worker));
    kill(program, SIGKILL);
    waitpid(program, nullptr, 0);
    for (int wait = 0; wait < 1000 && !HasEnded(worker); ++wait) std::this_thread::sleep_for(milliseconds(10));
    EXPECT_TRUE(HasEnded(worker));
    close(pipe[0]);
    close(pipe[1]);
}

}  // namespace ZEMA::testing

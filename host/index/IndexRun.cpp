#include "host/index/IndexRun.h"

#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <utility>

#include "host/index/FolderWalk.h"
#include "host/index/IndexTables.h"
#include "host/system/Paths.h"

namespace ZEMA {

namespace {

using std::chrono::nanoseconds;

// A file system gives its times in ticks; a second change within one shows in no stamp. The clocks of other machines
// are not ours.
constexpr std::int64_t kSettlingTime = nanoseconds(std::chrono::seconds(3)).count();
constexpr std::int64_t kSettlingTimeOnNetwork = nanoseconds(std::chrono::hours(1)).count();

// How many records are written at once, and how long one waits for the others at most.
constexpr std::size_t kBatchSize = 500;
constexpr auto kBatchTime = std::chrono::seconds(1);

// Paths below a folder sort behind the folder with a slash, and before it with the character that follows the slash.
struct PathBounds {
    explicit PathBounds(const std::string& folder) : first(folder == "/" ? folder : folder + "/"), end(first) {
        end.back() = '/' + 1;
    }
    std::string first;
    std::string end;
};

// What the index knows of a document before the run.
struct KnownDocument {
    std::int64_t id = 0;
    std::string path;
    FileStamp stamp;
    bool isSettled = false;
    bool isAway = false;
    bool isToBeRead = false;  // whatever its stamp is
    std::int64_t folder = 0;
    std::string fileSystem;   // that it was found on
    std::string folderPlace;  // in it
    bool isFound = false;     // by this run
};

// A document that the run reads.
struct Task {
    std::string path;
    FileStamp stamp;
    const KnownDocument* known = nullptr;  // null for a new one
    bool isSettled = false;                // as it was when its turn came
};

// A record that waits to be written.
struct ReadDocument {
    DocumentRecord record;
    Task task;
};

// The clock that local file systems take their times from.
std::int64_t FileClock() {
    struct timespec now;
    clock_gettime(CLOCK_REALTIME_COARSE, &now);
    return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

// Absolute and without links, as far as there is anything.
std::string WholePath(const std::string& path) {
    const Result<std::string> whole = AbsolutePath(path);
    std::string real = RealPath(whole ? *whole : path);
    if (real.size() > 1 && real.ends_with('/')) real.pop_back();
    return real;
}

class Run {
public:
    Run(Database& database, DocumentWorkers& workers, const IndexRunOptions& options)
        : database_(database),
          workers_(workers),
          options_(options),
          tables_(database, options.program),
          findFolder_(database.Prepare("SELECT id FROM folders WHERE path = ? AND filesystem = ? AND place = ?")),
          addFolder_(database.Prepare("INSERT INTO folders(path, filesystem, place) VALUES(?, ?, ?) RETURNING id")),
          findPath_(database.Prepare("SELECT id FROM documents WHERE path = ?")),
          setPlace_(database.Prepare("UPDATE documents SET path = ?, folder = ?, away = 0 WHERE id = ? AND path = ?")),
          setAway_(database.Prepare("UPDATE documents SET away = 1 WHERE id = ? AND path = ?")) {}

    Result<IndexRunReport> Make() {
        const std::vector<std::string> folders = Folders();
        for (const std::string& folder : folders) {
            Know(folder);
            WalkFolder(folder, fileSystems_, walk_);
        }
        TellOfFolders();
        Compare();
        ReadAll();
        LetGo();
        report_.foldersWithout = folders.empty() ? 1 : 0;
        report_.found = walk_.documents.size();
        if (database_.Failed()) return database_.Why();
        return report_;
    }

private:
    // Without links, and without those that lie in others. The folders that were named are known from now on.
    std::vector<std::string> Folders() {
        std::vector<std::string> folders;
        if (options_.folders.empty()) {
            Statement known = database_.Prepare("SELECT path FROM roots");
            while (known.Step()) folders.emplace_back(known.Text(0));
        } else {
            Statement add = database_.Prepare("INSERT OR IGNORE INTO roots(path) VALUES(?)");
            for (const std::string& named : options_.folders) {
                folders.push_back(WholePath(named));
                std::error_code error;
                if (std::filesystem::is_directory(folders.back(), error)) add.Bind(Bytes{folders.back()}).Run();
            }
        }
        std::sort(folders.begin(), folders.end());
        std::vector<std::string> outermost;
        for (const std::string& folder : folders) {
            const auto isAround = [&](const std::string& other) {
                return folder == other || folder.starts_with(PathBounds(other).first);
            };
            if (std::none_of(outermost.begin(), outermost.end(), isAround)) outermost.push_back(folder);
        }
        return outermost;
    }

    // Takes in what the index knows of the documents below a folder.
    void Know(const std::string& folder) {
        const PathBounds bounds(folder);
        Statement documents = database_.Prepare(
            "SELECT documents.id, documents.path, size, modified, changed, number, settled, away, "
            "passing OR (error IS NOT NULL AND program <> ?), folder, filesystem, place "
            "FROM documents JOIN folders ON folders.id = folder WHERE documents.path >= ? AND documents.path < ?");
        documents.Bind(std::string_view(options_.program), Bytes{bounds.first}, Bytes{bounds.end});
        while (documents.Step()) {
            const FileStamp stamp{documents.Number(2), documents.Number(3), documents.Number(4), documents.Number(5)};
            auto known = std::make_unique<KnownDocument>(
                KnownDocument{documents.Number(0), std::string(documents.Text(1)), stamp, documents.Number(6) != 0,
                              documents.Number(7) != 0, documents.Number(8) != 0, documents.Number(9),
                              std::string(documents.Text(10)), std::string(documents.Text(11))});
            KnownDocument& entered = *known;
            byNumber_.emplace(stamp.number, &entered);
            known_.emplace(entered.path, std::move(known));
        }
    }

    void TellOfFolders() {
        for (const auto& [path, folder] : walk_.folders) {
            if (!folder.failure) continue;
            ++report_.foldersFailed;
            options_.tell(path, folder.failure.text);
        }
    }

    // Finds out what is to be read, and enters what only lies elsewhere than before.
    void Compare() {
        for (const WalkedDocument& document : walk_.documents) {
            const auto known = known_.find(document.path);
            if (known != known_.end()) known->second->isFound = true;
        }
        database_.Run("BEGIN IMMEDIATE");
        for (const WalkedDocument& document : walk_.documents) {
            const auto found = known_.find(document.path);
            KnownDocument* const known = found == known_.end() ? nullptr : found->second.get();
            if (known == nullptr) {
                if (!Move(document)) tasks_.push_back({document.path, document.stamp});
            } else if (IsToBeRead(*known, document.stamp)) {
                tasks_.push_back({document.path, document.stamp, known});
            } else if (const std::int64_t folder = FolderId(document.path); known->isAway || known->folder != folder) {
                setPlace_.Bind(Bytes{document.path}, folder, known->id, Bytes{document.path}).Run();
            }
        }
        Commit();
    }

    static bool IsToBeRead(const KnownDocument& known, const FileStamp& stamp) {
        return known.isToBeRead || !known.isSettled || known.stamp.size != stamp.size ||
               known.stamp.modified != stamp.modified || known.stamp.changed != stamp.changed;
    }

    // Whether the document is one that lay elsewhere.
    bool Move(const WalkedDocument& document) {
        const FolderPlace& place = walk_.folders[FolderOf(document.path)].place;
        const auto [first, last] = byNumber_.equal_range(document.stamp.number);
        for (auto candidate = first; candidate != last; ++candidate) {
            KnownDocument& known = *candidate->second;
            const bool isSame = !known.isFound && known.stamp == document.stamp && !place.fileSystem.empty() &&
                                known.fileSystem == place.fileSystem && NameOf(known.path) == NameOf(document.path) &&
                                !IsToBeRead(known, document.stamp) && IsGone(known.path);
            if (!isSame || HasPath(document.path)) continue;
            setPlace_.Bind(Bytes{document.path}, FolderId(document.path), known.id, Bytes{known.path}).Run();
            known.isFound = true;
            ++report_.moved;
            return true;
        }
        return false;
    }

    // In the index, which another run may have written meanwhile.
    bool HasPath(const std::string& path) {
        const bool found = findPath_.Bind(Bytes{path}).Step();
        findPath_.Reset();
        return found;
    }

    void ReadAll() {
        std::size_t next = 0;
        std::size_t done = 0;
        std::vector<ReadDocument> batch;
        auto batchStart = std::chrono::steady_clock::now();
        workers_.Run(
            [&](FoundDocument& document) {
                if (next == tasks_.size() || database_.Failed()) return false;
                Task& task = tasks_[next++];
                task.isSettled = IsSettled(task);
                document = {task.path, {}};
                return true;
            },
            [&](DocumentRecord record) {
                Task& task = tasks_[done++];
                if (!record.imported) {
                    ++report_.failed;
                    options_.tell(record.path, record.error);
                }
                batch.push_back({std::move(record), std::move(task)});
                const bool isFull = batch.size() == kBatchSize;
                if (isFull || std::chrono::steady_clock::now() - batchStart >= kBatchTime) {
                    Write(batch);
                    batchStart = std::chrono::steady_clock::now();
                }
                options_.showProgress(done, tasks_.size(), report_.failed);
                return !database_.Failed();
            });
        Write(batch);
        report_.read = done;
    }

    // Whether whoever changes the document from now on gives it another stamp. A time in the future can not tell; that
    // it is read twice must do.
    bool IsSettled(const Task& task) {
        const std::int64_t age = FileClock() - task.stamp.changed;
        if (age < 0) return task.known != nullptr && task.known->stamp.changed == task.stamp.changed;
        const bool isOnNetwork = walk_.folders[FolderOf(task.path)].place.isOnNetwork;
        return age >= (isOnNetwork ? kSettlingTimeOnNetwork : kSettlingTime);
    }

    void Write(std::vector<ReadDocument>& batch) {
        if (batch.empty()) return;
        database_.Run("BEGIN IMMEDIATE");
        for (const ReadDocument& document : batch) {
            // One that has gone meanwhile is left to the next run.
            if (!document.record.imported && IsGone(document.record.path)) continue;
            tables_.Put(document.record, document.task.stamp, document.task.isSettled, FolderId(document.record.path));
        }
        Commit();
        batch.clear();
    }

    // What is known and was not found goes, or is away.
    void LetGo() {
        database_.Run("BEGIN IMMEDIATE");
        for (const auto& [path, known] : known_) {
            if (known->isFound) continue;
            if (!IsAt(*known)) continue;
            if (HasGone(*known)) {
                tables_.Remove(known->id);
                ++report_.removed;
            } else {
                if (!known->isAway) setAway_.Bind(known->id, Bytes{known->path}).Run();
                ++report_.away;
            }
        }
        database_.Run("DELETE FROM folders WHERE id NOT IN (SELECT folder FROM documents)");
        Commit();
    }

    // Another run may have moved or removed it.
    bool IsAt(const KnownDocument& known) {
        const bool isThere = findPath_.Bind(Bytes{known.path}).Step() && findPath_.Number(0) == known.id;
        findPath_.Reset();
        return isThere;
    }

    // Its folder may have gone with it. The places are asked for last: a disk that is being taken away looks empty
    // before the place says so.
    bool HasGone(const KnownDocument& known) {
        if (known.fileSystem.empty() || !IsGone(known.path)) return false;
        const std::string folder = FolderOf(known.path);
        std::string listed = folder;
        while (walk_.folders.count(listed) == 0) {
            if (listed == "/") return false;
            listed = FolderOf(listed);
        }
        const WalkedFolder& walked = walk_.folders[listed];
        const std::string rest = folder.substr(listed == "/" ? 0 : listed.size());
        const auto isWhereItWas = [&](const FolderPlace& place) {
            return place.fileSystem == known.fileSystem &&
                   (place.place == "/" ? "" : place.place) + rest == known.folderPlace;
        };
        return !walked.failure && isWhereItWas(walked.place) && isWhereItWas(fileSystems_.PlaceOf(listed));
    }

    // Only within a transaction, since another run removes folders without documents.
    std::int64_t FolderId(const std::string& document) {
        const std::string path = FolderOf(document);
        const auto [entry, isNew] = folderIds_.try_emplace(path, 0);
        if (!isNew) return entry->second;
        const FolderPlace& place = walk_.folders[path].place;
        for (Statement* const statement : {&findFolder_, &addFolder_}) {
            statement->Bind(Bytes{path}, std::string_view(place.fileSystem), Bytes{place.place});
            if (statement->Step()) entry->second = statement->Number(0);
            statement->Reset();
            if (entry->second != 0) break;
        }
        return entry->second;
    }

    void Commit() {
        database_.Run("COMMIT");
        folderIds_.clear();
    }

    Database& database_;
    DocumentWorkers& workers_;
    const IndexRunOptions& options_;
    DocumentTables tables_;
    Statement findFolder_;
    Statement addFolder_;
    Statement findPath_;
    Statement setPlace_;
    Statement setAway_;

    FileSystems fileSystems_;
    Walk walk_;
    std::unordered_map<std::string, std::unique_ptr<KnownDocument>> known_;  // by path
    std::unordered_multimap<std::int64_t, KnownDocument*> byNumber_;
    std::unordered_map<std::string, std::int64_t> folderIds_;  // of this transaction
    std::vector<Task> tasks_;
    IndexRunReport report_;
};

}  // namespace

Result<IndexRunReport> UpdateIndex(Database& database, DocumentWorkers& workers, const IndexRunOptions& options) {
    return Run(database, workers, options).Make();
}

Result<std::size_t> ForgetFolder(Database& database, const std::string& folder) {
    const std::string path = WholePath(folder);
    const PathBounds bounds(path);
    // Pages that become free are overwritten; merged, the full-text table holds no word that no document has; and the
    // log, which holds older pages, is emptied.
    database.Run("PRAGMA secure_delete = ON");
    database.Run("BEGIN IMMEDIATE");
    Statement removeRoots = database.Prepare("DELETE FROM roots WHERE path = ? OR (path >= ? AND path < ?)");
    removeRoots.Bind(Bytes{path}, Bytes{bounds.first}, Bytes{bounds.end}).Run();
    std::vector<std::int64_t> documents;
    Statement find = database.Prepare("SELECT id FROM documents WHERE path >= ? AND path < ?");
    find.Bind(Bytes{bounds.first}, Bytes{bounds.end});
    while (find.Step()) documents.push_back(find.Number(0));
    DocumentTables tables(database, "");
    for (const std::int64_t document : documents) tables.Remove(document);
    database.Run("DELETE FROM folders WHERE id NOT IN (SELECT folder FROM documents)");
    database.Run("INSERT INTO words(words) VALUES('optimize')");
    database.Run("COMMIT");
    database.Run("PRAGMA wal_checkpoint(TRUNCATE)");
    if (database.Failed()) return database.Why();
    return documents.size();
}

}  // namespace ZEMA

#include "host/index/IndexFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "host/archive/MarkedFile.h"
#include "host/index/FileSystems.h"
#include "host/index/IndexTables.h"
#include "host/system/FileDescriptor.h"
#include "host/system/Paths.h"

namespace ZEMA {

namespace {

// The header of a data base file (SQLite, "Database File Format", 1.3).
constexpr std::size_t kHeaderSize = 100;
constexpr std::string_view kMagic("SQLite format 3\0", 16);
constexpr std::size_t kApplicationOffset = 68;  // 4 bytes, the most significant first

constexpr std::string_view kApplication = "WQFI";  // as bytes of the header
constexpr const char* kSetApplication = "PRAGMA application_id = 0x57514649";

// Fails unless the file is an index by its own bytes.
Failure CheckIndex(const std::string& path) {
    const Result<FileDescriptor> file = OpenRegularFile(path);
    if (!file) return file.Why();
    std::array<char, kHeaderSize> header;
    const bool isIndex = ReadAllAt(file->Get(), 0, header.size(), header.data()) &&
                         std::string_view(header.data(), kMagic.size()) == kMagic &&
                         std::string_view(header.data() + kApplicationOffset, 4) == kApplication;
    if (!isIndex) return {FailureKind::WrongKind, "it is no index, and is left alone"};
    return {};
}

// Makes a folder and those around it.
Failure MakePrivateFolders(const std::string& folder) {
    if (mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST) return {};
    if (errno != ENOENT) return SystemFailure(errno);
    if (Failure failure = MakePrivateFolders(FolderOf(folder))) return failure;
    return mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST ? Failure() : SystemFailure(errno);
}

// The file comes to be whole, with its tables in it and by its own bytes an index; so whoever is stopped half way
// leaves none behind. Somebody else may make it at the same time.
Failure MakeIndex(const std::string& path) {
    if (Failure failure = MakePrivateFolders(FolderOf(path))) return failure;
    const std::unique_ptr<Database> tables = Database::InMemory();
    tables->Run(kSetApplication);
    CreateTables(*tables, 0);
    if (tables->Failed()) return tables->Why();
    MarkedFile::RemoveLeftovers(FolderOf(path));
    MarkedFile file;
    if (Failure failure = file.Create(path)) return failure;
    if (!WriteAll(file.Descriptor(), tables->Image())) return SystemFailure(errno);
    const Failure failure = file.Commit(MarkedFile::Place::Free, true);
    return failure && CheckIndex(path) ? failure : Failure();
}

Failure CheckVersion(Database& database, std::int64_t& version) {
    version = database.NumberOf("PRAGMA user_version");
    if (database.Failed()) return database.Why();
    if (version <= kSchemaVersion) return {};
    return {FailureKind::Unsupported, "it was made by a newer version of this program"};
}

Failure Upgrade(Database& database) {
    database.Run("BEGIN IMMEDIATE");
    std::int64_t version = 0;  // once more, since another run may have done it meanwhile
    if (Failure failure = CheckVersion(database, version)) return failure;
    CreateTables(database, version);
    database.Run("COMMIT");
    return database.Why();
}

}  // namespace

Result<std::string> DefaultIndexPath() {
    const char* const data = std::getenv("XDG_DATA_HOME");
    if (data != nullptr && data[0] == '/') return std::string(data) + "/wqf/index.db";
    const char* const home = std::getenv("HOME");
    if (home != nullptr && home[0] == '/') return std::string(home) + "/.local/share/wqf/index.db";
    return Failure{FailureKind::Missing, "neither XDG_DATA_HOME nor HOME says where it is"};
}

Result<std::unique_ptr<Database>> OpenIndexForWriting(const std::string& path) {
    Failure failure = CheckIndex(path);
    if (failure.kind == FailureKind::Missing) failure = MakeIndex(path);
    if (failure) return failure;
    Result<std::unique_ptr<Database>> database = Database::Open(path, Database::Mode::Write);
    if (!database) return database.Why();
    std::int64_t version = 0;
    if (failure = CheckVersion(**database, version); failure) return failure;
    // A log beside the file lets others read while this one writes; it needs memory that they share.
    (*database)->Run(IsOnNetwork(FolderOf(path)) ? "PRAGMA journal_mode = DELETE"
                                                 : "PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL");
    if (version < kSchemaVersion) {
        if (failure = Upgrade(**database); failure) return failure;
    }
    if ((*database)->Failed()) return (*database)->Why();
    return database;
}

Result<std::unique_ptr<Database>> OpenIndexForReading(const std::string& path) {
    if (Failure failure = CheckIndex(path)) return failure;
    Result<std::unique_ptr<Database>> database = Database::Open(path, Database::Mode::Read);
    if (!database) return database.Why();
    std::int64_t version = 0;
    if (Failure failure = CheckVersion(**database, version)) return failure;
    if (version < kSchemaVersion)
        return Failure{FailureKind::Unsupported, "it was made by an older version; 'wqf index' brings it up to date"};
    return database;
}

Result<std::string> SetIndexAside(const std::string& path) {
    if (Failure failure = CheckIndex(path)) {
        if (failure.kind == FailureKind::Missing) return std::string();
        return failure;
    }
    std::string aside;
    for (int number = 1; aside.empty() || access(aside.c_str(), F_OK) == 0; ++number) {
        aside = path + ".old" + (number == 1 ? "" : std::to_string(number));
    }
    // The log goes first: one that stayed would be taken for that of the new file.
    for (const char* const ending : {"-wal", "-shm", ""}) {
        if (std::rename((path + ending).c_str(), (aside + ending).c_str()) != 0 && errno != ENOENT)
            return SystemFailure(errno);
    }
    return aside;
}

}  // namespace ZEMA

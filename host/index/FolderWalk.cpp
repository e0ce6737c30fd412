#include "host/index/FolderWalk.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string_view>

#include "host/documents/DocumentFinder.h"

namespace ZEMA {

namespace {

struct DirectoryCloser {
    void operator()(DIR* directory) const { closedir(directory); }
};

std::int64_t Nanoseconds(const struct timespec& time) {
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

bool ToStamp(const struct stat& status, FileStamp& stamp) {
    if (!S_ISREG(status.st_mode)) return false;
    stamp = {status.st_size, Nanoseconds(status.st_mtim), Nanoseconds(status.st_ctim),
             static_cast<std::int64_t>(status.st_ino)};
    return true;
}

bool IsFolder(DIR* directory, const dirent& entry) {
    if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
    struct stat status;
    return fstatat(dirfd(directory), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
}

// Lists one folder, and puts the folders in it on the list of those to come.
Failure ListFolder(const std::string& folder, std::vector<std::string>& folders, Walk& walk) {
    const std::unique_ptr<DIR, DirectoryCloser> directory(opendir(folder.c_str()));
    if (!directory) return SystemFailure(errno);
    const std::string start = folder == "/" ? folder : folder + "/";
    for (;;) {
        errno = 0;
        const dirent* const entry = readdir(directory.get());
        if (entry == nullptr) return errno == 0 ? Failure() : SystemFailure(errno);
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") continue;
        if (IsFolder(directory.get(), *entry)) {
            folders.push_back(start + entry->d_name);
        } else if (IsDocumentName(name)) {
            struct stat status;
            FileStamp stamp;
            const bool isDocument =
                fstatat(dirfd(directory.get()), entry->d_name, &status, 0) == 0 && ToStamp(status, stamp);
            if (isDocument) walk.documents.push_back({start + entry->d_name, stamp});
        }
    }
}

}  // namespace

void WalkFolder(const std::string& folder, FileSystems& fileSystems, Walk& walk) {
    for (std::vector<std::string> folders = {folder}; !folders.empty();) {
        const std::string next = std::move(folders.back());
        folders.pop_back();
        if (walk.folders.count(next) != 0) continue;
        // What is mounted or taken away while the folder is listed must not count as it: so the place is asked twice.
        WalkedFolder& walked = walk.folders[next];
        walked.place = fileSystems.PlaceOf(next);
        walked.failure = ListFolder(next, folders, walk);
        const FolderPlace after = fileSystems.PlaceOf(next);
        if (after.fileSystem != walked.place.fileSystem || after.place != walked.place.place) walked.place = {};
    }
    std::sort(walk.documents.begin(), walk.documents.end(),
              [](const WalkedDocument& a, const WalkedDocument& b) { return a.path < b.path; });
}

bool IsGone(const std::string& path) {
    struct stat status;
    return lstat(path.c_str(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

}  // namespace ZEMA

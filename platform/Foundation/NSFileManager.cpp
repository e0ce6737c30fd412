#include "platform/Foundation/NSFileManager.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include "platform/Foundation/NSPathUtilities.h"
#include "platform/Foundation/Uninterrupted.h"

#ifdef __APPLE__
#include <sys/attr.h>
#endif

namespace Foundation {
namespace fs = std::filesystem;
namespace {

NSFileType TypeOf(mode_t mode) {
    if (S_ISREG(mode)) return NSFileTypeRegular;
    if (S_ISDIR(mode)) return NSFileTypeDirectory;
    if (S_ISLNK(mode)) return NSFileTypeSymbolicLink;
    if (S_ISSOCK(mode)) return NSFileTypeSocket;
    if (S_ISCHR(mode)) return NSFileTypeCharacterSpecial;
    if (S_ISBLK(mode)) return NSFileTypeBlockSpecial;
    return NSFileTypeUnknown;
}

// The path as the system takes it; where it has no such form the name is empty, which names nothing.
std::string SystemPath(CFStringRef path) {
    return FileSystemRepresentation(path).value_or(std::string());
}

bool Fail(int error) {
    errno = error;
    return false;
}

bool SetModificationDate(const std::string& path, const NSDate& date) {
    const std::timespec time = date.timespec();
    const std::timespec both[] = {time, time};  // access, modification
    return utimensat(AT_FDCWD, path.c_str(), both, 0) == 0;
}

bool SetCreationDate([[maybe_unused]] const std::string& path, [[maybe_unused]] const NSDate& date) {
#ifdef __APPLE__
    attrlist list = {};
    list.bitmapcount = ATTR_BIT_MAP_COUNT;
    list.commonattr = ATTR_CMN_CRTIME;
    std::timespec time = date.timespec();
    return setattrlist(path.c_str(), &list, &time, sizeof time, 0) == 0 || errno == ENOTSUP;
#else
    return true;
#endif
}

// Makes an empty file that was not there.
bool CreateNewFile(const std::string& path) {
    const int descriptor = Uninterrupted([&] {
        return open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);  // the umask takes its share
    });
    if (descriptor == -1) return false;
    close(descriptor);
    return true;
}

// Makes an empty file beside the path and gives it that name. Names that others use already are passed over.
bool ReplaceByEmptyFile(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        return Fail(S_ISDIR(status.st_mode) ? EISDIR : EEXIST);
    }
    constexpr int kAttempts = 1000;
    const std::string stem = path.substr(0, path.rfind('/') + 1) + ".new-" + std::to_string(getpid()) + "-";
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        const std::string beside = stem + std::to_string(attempt);
        if (CreateNewFile(beside)) {
            if (std::rename(beside.c_str(), path.c_str()) == 0) return true;
            const int error = errno;
            unlink(beside.c_str());
            return Fail(error);
        }
        if (errno != EEXIST) return false;
    }
    return false;
}

// Renames unless something has the new name already, in one step where the file system can do that.
bool RenameToFreeName(const std::string& from, const std::string& to) {
#ifdef __APPLE__
    if (renamex_np(from.c_str(), to.c_str(), RENAME_EXCL) == 0) return true;
    if (errno != ENOTSUP) return false;
#else
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
    if (errno != EINVAL && errno != ENOSYS) return false;
#endif
    struct stat status = {};
    if (lstat(to.c_str(), &status) == 0) return Fail(EEXIST);
    return std::rename(from.c_str(), to.c_str()) == 0;
}

// Closes a directory that is being read.
struct CloseDirectory {
    void operator()(DIR* directory) const { closedir(directory); }
};

bool IsSelfOrParent(const std::string& name) {
    return name == "." || name == "..";
}

}  // namespace

NSFileAttributes FileAttributesOf(const struct stat& status) {
#ifdef __APPLE__
    const std::timespec& created = status.st_birthtimespec;
    const std::timespec& modified = status.st_mtimespec;
#else
    const std::timespec& created = status.st_ctim;
    const std::timespec& modified = status.st_mtim;
#endif
    NSFileAttributes attributes;
    attributes.fileType = TypeOf(status.st_mode);
    attributes.filePosixPermissions = status.st_mode & 07777u;
    attributes.fileCreationDate = NSDate::dateWithTimespec(created);
    attributes.fileModificationDate = NSDate::dateWithTimespec(modified);
    attributes.fileSize = static_cast<std::uint64_t>(status.st_size);
    return attributes;
}

struct NSDirectoryEnumerator::Walk {
    fs::path start;
    fs::recursive_directory_iterator item;  // the first one before the walk has begun
    bool hasBegun = false;

    bool IsAtEnd() const { return item == fs::recursive_directory_iterator(); }
};

NSDirectoryEnumerator::NSDirectoryEnumerator(CFStringRef path) {
    const std::string start = SystemPath(path);
    // The library would enter a start that is a link.
    std::error_code error;
    if (!fs::is_directory(fs::symlink_status(start, error))) return;
    fs::recursive_directory_iterator first(start, fs::directory_options::skip_permission_denied, error);
    walk_.reset(new Walk{start, std::move(first)});
}

NSDirectoryEnumerator::~NSDirectoryEnumerator() = default;

CFPointer<CFStringRef> NSDirectoryEnumerator::nextObject() {
    while (walk_ != nullptr && !walk_->IsAtEnd()) {
        std::error_code error;  // an error ends the walk
        if (walk_->hasBegun) walk_->item.increment(error);
        walk_->hasBegun = true;
        if (walk_->IsAtEnd()) break;
        const fs::path below = walk_->item->path().lexically_relative(walk_->start);
        if (auto name = StringWithFileSystemRepresentation(below.native())) return name;
        walk_->item.disable_recursion_pending();
    }
    return {};
}

std::optional<NSFileAttributes> NSDirectoryEnumerator::fileAttributes() const {
    struct stat status = {};
    if (walk_ == nullptr || walk_->IsAtEnd() || lstat(walk_->item->path().c_str(), &status) != 0) return {};
    return FileAttributesOf(status);
}

NSFileManager& NSFileManager::defaultManager() {
    static NSFileManager manager;
    return manager;
}

bool NSFileManager::fileExistsAtPath(CFStringRef path, bool* isDirectory) const {
    struct stat status = {};
    if (stat(SystemPath(path).c_str(), &status) != 0) return false;
    if (isDirectory != nullptr) *isDirectory = S_ISDIR(status.st_mode);
    return true;
}

std::optional<NSFileAttributes> NSFileManager::attributesOfItemAtPath(CFStringRef path) const {
    struct stat status = {};
    if (lstat(SystemPath(path).c_str(), &status) != 0) return {};
    return FileAttributesOf(status);
}

bool NSFileManager::setAttributes(const NSFileAttributes& attributes, CFStringRef ofItemAtPath) const {
    const std::string path = SystemPath(ofItemAtPath);
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) return false;
    // Creation first: a modification date before it would move it there.
    if (attributes.fileCreationDate && !SetCreationDate(path, *attributes.fileCreationDate)) return false;
    if (attributes.fileModificationDate && !SetModificationDate(path, *attributes.fileModificationDate)) return false;
    return !attributes.filePosixPermissions ||
           chmod(path.c_str(), static_cast<mode_t>(*attributes.filePosixPermissions)) == 0;
}

bool NSFileManager::createDirectoryAtPath(CFStringRef path) const {
    return mkdir(SystemPath(path).c_str(), 0777) == 0;
}

bool NSFileManager::createFileAtPath(CFStringRef path) const {
    const std::string name = SystemPath(path);
    return CreateNewFile(name) || (errno == EEXIST && ReplaceByEmptyFile(name));
}

bool NSFileManager::removeItemAtPath(CFStringRef path) const {
    std::error_code error;
    const std::uintmax_t removed = fs::remove_all(SystemPath(path), error);
    if (error) return Fail(error.value());
    return removed != 0 || Fail(ENOENT);
}

bool NSFileManager::moveItemAtPath(CFStringRef path, CFStringRef toPath) const {
    return RenameToFreeName(SystemPath(path), SystemPath(toPath));
}

CFPointer<CFArrayRef> NSFileManager::contentsOfDirectoryAtPath(CFStringRef path) const {
    const std::unique_ptr<DIR, CloseDirectory> directory(opendir(SystemPath(path).c_str()));
    if (directory == nullptr) return {};
    CFPointer<CFMutableArrayRef> names(CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks));
    for (;;) {
        errno = 0;
        const dirent* const entry = readdir(directory.get());
        if (entry == nullptr) break;
        const std::string name = entry->d_name;
        if (IsSelfOrParent(name)) continue;
        if (const auto text = StringWithFileSystemRepresentation(name)) CFArrayAppendValue(names.Get(), text.Get());
    }
    if (errno != 0) return {};
    return CFPointer<CFArrayRef>(names.Take());
}

NSDirectoryEnumerator NSFileManager::enumeratorAtPath(CFStringRef path) const {
    return NSDirectoryEnumerator(path);
}

CFPointer<CFStringRef> NSFileManager::destinationOfSymbolicLinkAtPath(CFStringRef path) const {
    std::error_code error;
    const fs::path destination = fs::read_symlink(SystemPath(path), error);
    if (error) return {};
    return StringWithFileSystemRepresentation(destination.native());
}

CFPointer<CFStringRef> NSFileManager::currentDirectoryPath() const {
    std::error_code error;
    const fs::path directory = fs::current_path(error);
    if (error) return {};
    return StringWithFileSystemRepresentation(directory.native());
}

}  // namespace Foundation

#include "storage/local/MacOSXDirectory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/BasicSet.h"
#include "platform/Foundation/NSFileHandle.h"
#include "platform/Foundation/NSFileManager.h"
#include "platform/Foundation/NSPathUtilities.h"
#include "storage/PathOperations.h"
#include "storage/local/MacOSXAttributes.h"
#include "storage/local/MacOSXFile.h"

namespace ZEMA {
namespace {

namespace fs = std::filesystem;

using Foundation::CFPointer;
using Foundation::NSFileAttributes;
using Foundation::NSFileHandle;
using Foundation::NSFileManager;
using CFStringPointer = CFPointer<CFStringRef>;

NSFileManager& FileManager() {
    return NSFileManager::defaultManager();
}

struct FileDescriptor {
    explicit FileDescriptor(int descriptor) : value(descriptor) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() { Reset(-1); }

    void Reset(int descriptor) {
        if (value >= 0) close(value);
        value = descriptor;
    }

    int value;  // -1 for none
};

bool CutTo(NSFileHandle& handle, std::uint64_t size) {
    try {
        handle.truncateFileAtOffset(size);
    } catch (const Foundation::NSException&) {
        return false;
    }
    handle.seekToFileOffset(0);
    return true;
}

// Lets the owner make and remove entries in every directory below the path; false at the first refusal.
bool MakeDirectoriesWritable(CFStringRef path) {
    constexpr std::uint32_t kOwnerWrite = 0200;
    Foundation::NSDirectoryEnumerator items = FileManager().enumeratorAtPath(path);
    for (CFStringPointer item = items.nextObject(); item; item = items.nextObject()) {
        const std::optional<NSFileAttributes> attributes = items.fileAttributes();
        if (!attributes || attributes->fileType != Foundation::NSFileTypeDirectory) continue;
        NSFileAttributes changed;
        changed.filePosixPermissions = attributes->filePosixPermissions.value_or(0) | kOwnerWrite;
        const CFStringPointer below = Foundation::stringByAppendingPathComponent(path, item.Get());
        if (!FileManager().setAttributes(changed, below.Get())) return false;
    }
    return true;
}

std::string SystemPath(CFStringRef path) {
    return Foundation::FileSystemRepresentation(path).value_or(std::string());
}

ElementIdentity IdentityOf(const struct stat& status) {
    return {status.st_dev, status.st_ino};
}

// Adds the folders below one; false when its listing would leave something out.
bool ListsAll(const fs::path& folder, std::vector<fs::path>& folders) {
    std::error_code error;
    BasicSet<String, StringCaseInsensitiveLess<String>> names;
    for (fs::directory_iterator item(folder, error), end; !error && item != end; item.increment(error)) {
        const CFStringPointer name = Foundation::StringWithFileSystemRepresentation(item->path().filename().native());
        if (!name || !names.Insert(String(name.Get()))) return false;
        std::error_code unknown;
        if (item->symlink_status(unknown).type() == fs::file_type::directory) folders.push_back(item->path());
        if (unknown) return false;
    }
    return !error;
}

}  // namespace

MacOSXDirectory::MacOSXDirectory(const String& name, Directory* parent, CFStringRef nativePath)
    : Directory(name, parent), path_(nativePath) {}

MacOSXDirectory::~MacOSXDirectory() = default;

CFStringPointer MacOSXDirectory::ChildPath(const String& name) const {
    return Foundation::stringByAppendingPathComponent(NativePath(), name.CFString());
}

bool MacOSXDirectory::SetFlags(const ElementFlags* flags) {
    return WriteFlags(NativePath(), *flags);
}

ElementFlags MacOSXDirectory::GetFlags() {
    ElementFlags flags;
    ReadFlags(NativePath(), &flags);
    return flags;
}

bool MacOSXDirectory::SetTimes(const ElementTimes* times) {
    return WriteTimes(NativePath(), *times);
}

ElementTimes MacOSXDirectory::GetTimes() {
    ElementTimes times;
    ReadTimes(NativePath(), &times);
    return times;
}

Directory* MacOSXDirectory::CreateChildObject(const String& name) {
    if (name.IsEmpty()) return this;
    return new MacOSXDirectory(name, this, ChildPath(name).Get());
}

bool MacOSXDirectory::CreateDirectory(const String& name) {
    return FileManager().createDirectoryAtPath(ChildPath(name).Get());
}

File* MacOSXDirectory::OpenFile(const String& name, const AccessStyle* style, bool create,
                                const std::uint64_t* truncateTo) {
    const CFStringPointer path = ChildPath(name);
    std::unique_ptr<NSFileHandle> handle = FileHandleAtPath(path.Get(), *style);
    if (handle == nullptr && create && FileManager().createFileAtPath(path.Get())) {
        handle = FileHandleAtPath(path.Get(), *style);
    }
    if (handle == nullptr) return nullptr;
    if (truncateTo != nullptr && !CutTo(*handle, *truncateTo)) return nullptr;
    return new MacOSXFile(name, this, path.Get(), std::move(handle));
}

bool MacOSXDirectory::Remove(const String& name, bool force) {
    const CFStringPointer path = ChildPath(name);
    if (OpenPathRegistry::Count(String(path.Get())) != 0) return false;
    // Nothing is taken out of a folder that its owner may not change: not of the child itself, nor of one below it.
    if (force) {
        ElementFlags flags;
        if (!GetChildFlags(name, &flags)) return false;
        if (!flags.Has(ElementFlags::kEntriesWritable)) {
            flags.Set(ElementFlags::kEntriesWritable, true);
            if (!SetChildFlags(name, &flags)) return false;
        }
        if (!MakeDirectoriesWritable(path.Get())) return false;
    }
    return FileManager().removeItemAtPath(path.Get());
}

bool MacOSXDirectory::Rename(const String& oldName, const String& newName) {
    return FileManager().moveItemAtPath(ChildPath(oldName).Get(), ChildPath(newName).Get());
}

bool MacOSXDirectory::GetChildFlags(const String& name, ElementFlags* flags) {
    return ReadFlags(ChildPath(name).Get(), flags);
}

bool MacOSXDirectory::SetChildFlags(const String& name, const ElementFlags* flags) {
    return WriteFlags(ChildPath(name).Get(), *flags);
}

bool MacOSXDirectory::GetChildTimes(const String& name, ElementTimes* times) {
    return ReadTimes(ChildPath(name).Get(), times);
}

bool MacOSXDirectory::SetChildTimes(const String& name, const ElementTimes* times) {
    return WriteTimes(ChildPath(name).Get(), *times);
}

bool MacOSXDirectory::IsEmpty() {
    return !FileManager().contentsOfDirectoryAtPath(NativePath());
}

bool MacOSXDirectory::HasDirectoryPath(const BasicArray<String>& components) {
    const CFPointer<CFMutableArrayRef> parts(CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks));
    CFArrayAppendValue(parts.Get(), NativePath());
    for (const String& component : components) CFArrayAppendValue(parts.Get(), component.CFString());
    bool isDirectory = false;
    const CFStringPointer path = Foundation::pathWithComponents(parts.Get());
    return FileManager().fileExistsAtPath(path.Get(), &isDirectory) && isDirectory;
}

bool MacOSXDirectory::HasFile(const String& name) {
    bool isDirectory = false;
    return FileManager().fileExistsAtPath(ChildPath(name).Get(), &isDirectory) && !isDirectory;
}

bool MacOSXDirectory::List(const String& pattern, Listing* listing) {
    const CFPointer<CFArrayRef> names = FileManager().contentsOfDirectoryAtPath(NativePath());
    if (!names) return false;
    const CFIndex count = CFArrayGetCount(names.Get());
    for (CFIndex index = 0; index < count; ++index) {
        const String name(static_cast<CFStringRef>(CFArrayGetValueAtIndex(names.Get(), index)));
        if (MatchPattern(name, pattern)) listing->Insert(DescribeItem(ChildPath(name).Get(), name));
    }
    return count != 0;
}

bool MacOSXDirectory::GetIdentity(const String& name, ElementIdentity* identity) {
    struct stat status = {};
    if (stat(SystemPath(ChildPath(name).Get()).c_str(), &status) != 0) return false;
    *identity = IdentityOf(status);
    return true;
}

bool MacOSXDirectory::GetEnclosing(BasicArray<ElementIdentity>* enclosing) {
    FileDescriptor folder(open(SystemPath(NativePath()).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    struct stat status = {};
    while (folder.value >= 0 && fstat(folder.value, &status) == 0) {
        const ElementIdentity identity = IdentityOf(status);
        if (!enclosing->Empty() && enclosing->Back() == identity) return true;  // above the root is the root
        enclosing->PushBack(identity);
        folder.Reset(openat(folder.value, "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
    }
    return false;
}

bool MacOSXDirectory::ShowsAllOf(const String& name) {
    const fs::path path = SystemPath(ChildPath(name).Get());
    std::error_code error;
    if (fs::symlink_status(path, error).type() != fs::file_type::directory) return true;
    for (std::vector<fs::path> folders = {path}; !folders.empty();) {
        const fs::path folder = std::move(folders.back());
        folders.pop_back();
        if (!ListsAll(folder, folders)) return false;
    }
    return true;
}

}  // namespace ZEMA

#include "host/archive/StorageTree.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "host/system/Paths.h"
#include "host/system/Utf8Text.h"

namespace ZEMA {

namespace {

Failure NoFolder() {
    return {FailureKind::WrongKind, "is no folder and no archive"};
}

// Why nothing can lie in the item, which is no folder.
Failure WhyNoFolder(const StorageFacts& facts) {
    return facts.IsMissing() ? WhyMissing(facts) : NoFolder();
}

ElementFlags FlagsOf(const struct stat& status) {
    ElementFlags flags;
    const bool writable = (status.st_mode & S_IWUSR) != 0;
    flags.Set(ElementFlags::kDirectory, S_ISDIR(status.st_mode));
    flags.Set(ElementFlags::kReadable, (status.st_mode & S_IRUSR) != 0);
    flags.Set(ElementFlags::kWritable | ElementFlags::kEntriesWritable, writable);
    flags.Set(ElementFlags::kExecutable, (status.st_mode & S_IXUSR) != 0);
    return flags;
}

StorageFacts FactsOfNative(const std::string& path) {
    StorageFacts facts;
    struct stat status;
    bool there = lstat(path.c_str(), &status) == 0;
    facts.isLink = there && S_ISLNK(status.st_mode);
    if (facts.isLink) there = stat(path.c_str(), &status) == 0;
    if (!there && errno != ENOENT && errno != ENOTDIR) facts.error = errno;
    if (!there) return facts;
    facts.kind = S_ISREG(status.st_mode)   ? StorageKind::File
                 : S_ISDIR(status.st_mode) ? StorageKind::Folder
                                           : StorageKind::Other;
    if (facts.IsFile()) facts.size = static_cast<std::uint64_t>(status.st_size);
    facts.flags = FlagsOf(status);
    facts.modified = ModifiedTime(status);
    facts.mode = status.st_mode & 0777;
    return facts;
}

StorageFacts FactsOfNode(const ZipTreeNode* node) {
    StorageFacts facts;
    if (node == nullptr) return facts;
    facts.flags = node->Flags();
    facts.kind = facts.flags.IsDirectory() ? StorageKind::Folder : StorageKind::File;
    facts.size = facts.IsFolder() ? 0 : node->Size();
    return facts;
}

StorageItem NativeItem(const std::string& path, const std::string& shown) {
    StorageItem item;
    item.shown = shown;
    item.native = path;
    item.facts = FactsOfNative(path);
    return item;
}

StorageItem RootItem(const std::string& shown, const std::string& native, const MountedArchive::Pointer& archive) {
    StorageItem item;
    item.shown = shown;
    item.native = native;
    item.archive = archive;
    item.node = &archive->Root();
    item.facts = FactsOfNode(item.node.Get());
    item.facts.kind = StorageKind::Folder;
    return item;
}

// Whether a folder is there to which no path leads, since nothing in it has a name that is UTF-8.
bool IsUnseenFolder(const StorageItem& item) {
    if (!item.facts.IsMissing() || !item.archive->Names()) return false;
    return !(*item.archive->Names())->Inside(item.innerBytes).empty();
}

// The components of a path inside an archive; false where ".." leads out of it.
bool SplitInside(const std::string& rest, std::vector<std::string>& parts) {
    for (std::size_t begin = 0; begin < rest.size();) {
        const std::size_t end = std::min(rest.find('/', begin), rest.size());
        const std::string part = rest.substr(begin, end - begin);
        begin = end + 1;
        if (part == ".." && parts.empty()) return false;
        if (part == "..") {
            parts.pop_back();
        } else if (!part.empty() && part != ".") {
            parts.push_back(part);
        }
    }
    return true;
}

bool EndsInSlash(const std::string& path) {
    return path.ends_with('/') && path.find_first_not_of('/') != std::string::npos;
}

std::string WithoutSlashes(std::string path) {
    while (EndsInSlash(path)) path.pop_back();
    return path;
}

}  // namespace

std::optional<String> MemberName(const std::string& bytes) {
    if (!IsUtf8(bytes)) return std::nullopt;
    return FromUtf8(bytes);
}

Failure WhyMissing(const StorageFacts& facts) {
    return SystemFailure(facts.error != 0 ? facts.error : ENOENT);
}

void AppendName(StorageItem& item, const std::string& name) {
    const auto append = [&name](std::string& path) { path += (path.ends_with('/') ? "" : "/") + name; };
    append(item.shown);
    if (item.archive) {
        item.inner.PushBack(MemberName(name).value_or(String()));
        item.innerBytes += (item.innerBytes.empty() ? "" : "/") + name;
    } else {
        append(item.native);
    }
    item.node.Reset();
    item.facts = StorageFacts();
}

std::string StorageTree::FileOn(const std::string& path) {
    const std::string bare = WithoutSlashes(path);
    for (std::size_t end = 0; end != std::string::npos;) {
        end = bare.find('/', end + 1);
        const std::string start = bare.substr(0, end);
        struct stat status;
        if (stat(start.c_str(), &status) != 0) return "";
        if (S_ISREG(status.st_mode)) return start;
    }
    return "";
}

Result<StorageItem> StorageTree::Find(const std::string& path) {
    const std::string bare = WithoutSlashes(path);
    Result<StorageItem> item = NativeItem(bare, path);
    if (item->facts.IsMissing() && !item->facts.isLink) item = FindBehind(bare);
    if (!item) return item;
    if (!item->archive) item->shown = path;
    if (item->archive && item->facts.IsMissing() && EndsInSlash(path)) item->shown += '/';
    if (!EndsInSlash(path) || !item->facts.IsFile()) return item;
    item = Enter(*item);
    return !item || item->facts.IsFolder() ? item : NoFolder();
}

// A path to which the file system has nothing: it may run into an archive.
Result<StorageItem> StorageTree::FindBehind(const std::string& path) {
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1)) {
        const std::string start = path.substr(0, slash);
        const StorageFacts facts = FactsOfNative(start);
        if (facts.IsFolder()) continue;
        if (facts.IsFile()) return FindInside(start, path.substr(slash + 1));
        return WhyNoFolder(facts);
    }
    const StorageItem item = NativeItem(path, path);
    if (!path.empty() && item.facts.error == 0) return item;
    return WhyMissing(item.facts);
}

Result<StorageItem> StorageTree::FindInside(const std::string& archive, const std::string& rest) {
    std::vector<std::string> parts;
    const Result<MountedArchive::Pointer> mounted = Mount(archive);
    if (!mounted) return mounted.Why().kind == FailureKind::NoArchive ? NoFolder() : mounted.Why();
    if (!SplitInside(rest, parts)) return Refusal("'..' leads out of the archive");
    StorageItem item = RootItem(archive, archive, *mounted);
    for (const std::string& part : parts) {
        if (item.facts.IsFile()) {
            const Result<StorageItem> entered = Enter(item);
            if (!entered) return entered;
            item = *entered;
        }
        if (!item.facts.IsFolder() && !IsUnseenFolder(item)) return WhyNoFolder(item.facts);
        Descend(item, part);
    }
    return item;
}

Result<StorageItem> StorageTree::Enter(const StorageItem& item) {
    if (!item.facts.IsFile()) return item;
    const Result<MountedArchive::Pointer> archive =
        item.archive ? MountedArchive::OpenMember(item.archive, *item.node) : Mount(item.native);
    if (archive) return RootItem(item.shown, item.native, *archive);
    if (archive.Why().kind == FailureKind::NoArchive) return item;
    return archive.Why();
}

Result<MountedArchive::Pointer> StorageTree::Mount(const std::string& path) {
    struct stat status;
    const bool there = stat(path.c_str(), &status) == 0;
    if (there && last_ && last_->IsOf(status)) return last_;
    std::erase_if(mounted_, [](const auto& archive) { return archive.expired(); });
    for (const std::weak_ptr<const MountedArchive>& mounted : mounted_) {
        const MountedArchive::Pointer archive = mounted.lock();
        if (there && archive->IsOf(status)) return archive;
    }
    const Result<MountedArchive::Pointer> archive = MountedArchive::Open(path);
    if (!archive) return archive;
    mounted_.push_back(*archive);
    last_ = *archive;
    return archive;
}

Failure StorageTree::List(const StorageItem& folder, std::vector<StorageEntry>& entries) const {
    entries.clear();
    if (!folder.facts.IsFolder()) return WhyNoFolder(folder.facts);
    if (folder.archive) {
        entries.reserve(folder.node->GetChildren().Size());
        for (const auto& [name, child] : folder.node->GetChildren()) {
            entries.push_back({std::string(child->Name().ToAString().View()), FactsOfNode(child.Get())});
        }
        return {};
    }
    std::error_code error;
    for (std::filesystem::directory_iterator item(folder.native, error), end; !error && item != end;
         item.increment(error)) {
        entries.push_back({item->path().filename().string(), FactsOfNative(item->path().string())});
    }
    std::sort(entries.begin(), entries.end(),
              [](const StorageEntry& a, const StorageEntry& b) { return a.name < b.name; });
    return error ? SystemFailure(error.value()) : Failure();
}

void StorageTree::Descend(StorageItem& item, const std::string& name) const {
    const RefPointer<ZipTreeNode> folder = item.node;
    AppendName(item, name);
    if (folder) item.node = folder->FindChild(item.inner.Back());
    item.facts = item.archive ? FactsOfNode(item.node.Get()) : FactsOfNative(item.native);
}

StorageItem StorageTree::Child(const StorageItem& folder, const std::string& name) const {
    StorageItem item = folder;
    Descend(item, name);
    return item;
}

}  // namespace ZEMA

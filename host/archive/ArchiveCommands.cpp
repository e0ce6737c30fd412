// Making and removing: wqf mkdir, new and rm.
#include "host/archive/ArchiveCommands.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <map>

#include "core/BasicSet.h"
#include "host/archive/ArchiveEdits.h"
#include "host/archive/OverlayFile.h"
#include "host/archive/StorageTree.h"
#include "host/system/FileDescriptor.h"
#include "storage/zip/ZipFormat.h"
#include "storage/zip/ZipRecords.h"

namespace ZEMA {

namespace {

Failure Refusal(const char* text) {
    return {FailureKind::Refused, text};
}

// A folder to be made in an archive, found from the deepest thing on the way that is there.
Result<StorageItem> FindWithParents(StorageTree& tree, const std::string& path) {
    Result<StorageItem> item = tree.Find(path);
    std::vector<std::string> missing;
    for (std::string start = path; !item && start.find('/', 1) != std::string::npos;) {
        const std::size_t slash = start.rfind('/');
        missing.push_back(start.substr(slash + 1));
        start.resize(slash);
        item = tree.Find(start + "/");
    }
    for (; item && !missing.empty(); missing.pop_back()) {
        if (!missing.back().empty() && missing.back() != ".") item = tree.Child(*item, missing.back());
    }
    return item;
}

// The folders that a command is going to make in archives: what comes later on the line may lie in them.
class PlannedFolders {
public:
    bool Has(const StorageItem& item) const { return Holds(item, item.inner.Size()); }
    bool HasParentOf(const StorageItem& item) const {
        return item.archive && !item.inner.Empty() && Holds(item, item.inner.Size() - 1);
    }
    void Add(const StorageItem& item) { folders_[item.native].Insert(PathOf(item, item.inner.Size())); }

private:
    using Paths = BasicSet<String, StringCaseInsensitiveLess<String>>;

    static String PathOf(const StorageItem& item, std::size_t parts) {
        String path;
        for (std::size_t part = 0; part < parts; ++part) {
            path.Append("/");
            path.Append(item.inner[part]);
        }
        return path;
    }

    bool Holds(const StorageItem& item, std::size_t parts) const {
        const auto folders = folders_.find(item.native);
        return folders != folders_.end() && folders->second.Contains(PathOf(item, parts));
    }

    std::map<std::string, Paths> folders_;  // by the archive
};

// Without `parents` the folder around it must be there, or be made by the same command.
Result<StorageItem> FindPlace(StorageTree& tree, const std::string& path, bool parents, const PlannedFolders& planned) {
    const Result<StorageItem> found = tree.Find(path);
    if (found) return found;
    const Result<StorageItem> item = FindWithParents(tree, path);
    return item && (parents || planned.HasParentOf(*item)) ? item : found;
}

Failure WhyNotMade(const StorageItem& item, bool parents, const PlannedFolders& planned) {
    if (!item.archive) return Refusal("it does not lie in an archive; use mkdir");
    if (parents && (item.facts.IsFolder() || planned.Has(item))) return {};
    if (!item.facts.IsMissing() || planned.Has(item)) return Refusal("it is there already");
    if (item.archive->IsMember()) return Refusal("an archive in an archive can only be read");
    for (const String& name : item.inner) {
        if (name.IsEmpty() || name == String("..")) return Refusal("the name cannot stand in an archive");
    }
    if (item.archive->Volume().EndRecord().entryCount + item.inner.Size() > kMaxEntries) {
        return Refusal("it has too many members");
    }
    return {};
}

Failure WhyNoArchive(const StorageItem& item) {
    if (!item.facts.IsMissing() || item.facts.isLink) return Refusal("it is there already");
    if (item.archive) return Refusal("an archive is not made in another one ('wqf cp' puts it there)");
    if (item.shown.ends_with('/')) return Refusal("an archive is a file; name it without '/'");
    return {};
}

Failure MakeArchive(StorageTree& tree, const std::string& path) {
    const Result<StorageItem> item = tree.Find(path);
    if (!item) return item.Why();
    if (Failure failure = WhyNoArchive(*item)) return failure;
    const FileDescriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!file.IsOpen()) return SystemFailure(errno);
    const RefPointer<OverlayFile> archive = New<OverlayFile>(file.Get(), file.Get());
    if (WriteEmptyEndRecord(*archive) && fsync(file.Get()) == 0) return {};
    Failure failure = SystemFailure(archive->Error() != 0 ? archive->Error() : errno);
    unlink(path.c_str());
    return failure;
}

// A member at the node or below it that is write-protected, or null.
const ZipTreeNode* FindProtected(const ZipTreeNode& top) {
    std::vector<const ZipTreeNode*> pending = {&top};
    while (!pending.empty()) {
        const ZipTreeNode* const node = pending.back();
        pending.pop_back();
        if (node->Header() != nullptr && !node->Flags().Has(ElementFlags::kWritable)) return node;
        for (const auto& child : node->GetChildren()) pending.push_back(child.second.Get());
    }
    return nullptr;
}

Failure WhyNotRemoved(const StorageItem& item, const RemoveOptions& options) {
    if (item.facts.IsMissing() && !item.facts.isLink) return WhyMissing(item.facts);
    if (!item.archive) return Refusal("it does not lie in an archive; use rm");
    if (item.archive->IsMember()) return Refusal("an archive in an archive can only be read");
    if (item.inner.Empty()) return Refusal("is a whole archive; use rm");
    if (item.facts.IsFolder() && !options.recursive) return Refusal("is a folder (-r removes folders)");
    if (!options.force && FindProtected(*item.node) != nullptr) {
        return Refusal("it is write-protected (-f removes it)");
    }
    return {};
}

}  // namespace

void MakeFolders(const std::vector<std::string>& paths, bool parents, StorageReport& report) {
    StorageTree tree;
    std::vector<StorageItem> folders;
    PlannedFolders planned;
    for (const std::string& path : paths) {
        const Result<StorageItem> item = FindPlace(tree, path, parents, planned);
        if (const Failure failure = item ? WhyNotMade(*item, parents, planned) : item.Why()) {
            report.Fail(path, failure.text);
        } else if (!item->facts.IsFolder()) {
            folders.push_back(*item);
            planned.Add(*item);
        }
    }
    const auto add = [](SafeEdit& edit, const StorageItem& folder) { return edit.AddFolder(folder.inner); };
    EditMembers(folders, false, add, report);
}

void MakeArchives(const std::vector<std::string>& paths, StorageReport& report) {
    StorageTree tree;
    for (const std::string& path : paths) {
        if (const Failure failure = MakeArchive(tree, path)) report.Fail(path, failure.text);
    }
}

void RemovePaths(const std::vector<std::string>& paths, const RemoveOptions& options, StorageReport& report) {
    StorageTree tree;
    std::vector<StorageItem> members;
    for (const std::string& path : paths) {
        const Result<StorageItem> item = tree.Find(path);
        const Failure failure = item ? WhyNotRemoved(*item, options) : item.Why();
        if (!failure) {
            members.push_back(*item);
        } else if (!options.force || failure.kind != FailureKind::Missing) {
            report.Fail(path, failure.text);
        }
    }
    const auto remove = [](SafeEdit& edit, const StorageItem& member) { return edit.Remove(member.inner); };
    EditMembers(members, options.force, remove, report);
}

}  // namespace ZEMA

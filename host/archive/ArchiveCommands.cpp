// Making and removing: wqf mkdir, new and rm.
#include "host/archive/ArchiveCommands.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <map>
#include <system_error>
#include <utility>

#include "core/BasicSet.h"
#include "host/archive/ArchiveEdits.h"
#include "host/archive/OverlayFile.h"
#include "host/archive/StorageTree.h"
#include "host/system/FileDescriptor.h"
#include "host/system/Paths.h"
#include "storage/zip/ZipFormat.h"
#include "storage/zip/ZipRecords.h"

namespace ZEMA {

namespace {

// The folder on the way that is no archive's, where it is missing too.
bool MakeNativeFolders(const std::string& path, bool parents, StorageReport& report) {
    for (std::size_t slash = path.find('/', 1); parents && slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        if (mkdir(path.substr(0, slash).c_str(), 0777) != 0 && errno != EEXIST) break;
    }
    if (mkdir(path.c_str(), 0777) == 0) return true;
    report.Fail(path, SystemFailure(errno).text);
    return false;
}

// A folder to be made in an archive, found from the deepest thing on the way that is there.
std::optional<StorageItem> FindWithParents(StorageTree& tree, const std::string& path, std::string& problem) {
    std::optional<StorageItem> item = tree.Find(path, problem);
    std::vector<std::string> missing;
    for (std::string start = path; !item && start.find('/', 1) != std::string::npos;) {
        const std::size_t slash = start.rfind('/');
        missing.push_back(start.substr(slash + 1));
        start.resize(slash);
        std::string ignored;
        item = tree.Find(start + "/", ignored);
    }
    while (item && !missing.empty()) {
        if (!missing.back().empty() && missing.back() != ".") item = tree.Child(*item, missing.back());
        missing.pop_back();
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
std::optional<StorageItem> FindPlace(StorageTree& tree, const std::string& path, bool parents,
                                     const PlannedFolders& planned, std::string& problem) {
    std::optional<StorageItem> item = FindWithParents(tree, path, problem);
    const bool found = problem.empty() || parents || (item && planned.HasParentOf(*item));
    return found ? item : std::nullopt;
}

std::string WhyNotMade(const StorageItem& item, bool parents, const PlannedFolders& planned) {
    if (parents && (item.facts.IsFolder() || planned.Has(item))) return "";
    if (!item.facts.IsMissing() || item.facts.isLink || planned.Has(item)) return "it is there already";
    if (!item.archive) return "";
    if (item.archive->IsMember()) return "an archive in an archive can only be read";
    for (const String& name : item.inner) {
        if (name.IsEmpty() || name == String("..")) return "the name cannot stand in an archive";
    }
    if (item.archive->Volume().EndRecord().entryCount + item.inner.Size() > kMaxEntries)
        return "it has too many members";
    return "";
}

std::string WhyNoArchive(const StorageItem& item) {
    if (!item.facts.IsMissing() || item.facts.isLink) return "it is there already";
    if (item.archive) return "an archive is not made in another one ('wqf cp' puts it there)";
    if (item.shown.ends_with('/')) return "an archive is a file; name it without '/'";
    return "";
}

bool MakeArchive(StorageTree& tree, const std::string& path, std::string& problem) {
    const std::optional<StorageItem> item = tree.Find(path, problem);
    if (item) problem = WhyNoArchive(*item);
    if (!item || !problem.empty()) return false;
    const FileDescriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!file.IsOpen()) {
        problem = SystemFailure(errno).text;
        return false;
    }
    const RefPointer<OverlayFile> archive = New<OverlayFile>(file.Get(), file.Get());
    if (WriteEmptyEndRecord(*archive) && fsync(file.Get()) == 0) return true;
    problem = SystemFailure(archive->Error() != 0 ? archive->Error() : errno).text;
    unlink(path.c_str());
    return false;
}

const char kProtected[] = "it is write-protected (-f removes it)";

bool IsNativeFolder(const std::string& path) {
    struct stat status;
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool IsNativeFile(const std::string& path) {
    struct stat status;
    return lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

std::vector<std::string> NamesIn(const std::string& folder, std::error_code& error) {
    std::vector<std::string> names;
    for (std::filesystem::directory_iterator item(folder, error), end; !error && item != end; item.increment(error)) {
        names.push_back(item->path().filename().string());
    }
    return names;
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

// Why the path is not to be removed, or the empty text.
std::string WhyNotRemoved(const StorageItem& item, const RemoveOptions& options) {
    const std::string name = NameOf(item.native);
    if (item.facts.isLink && item.facts.IsFolder() && item.shown.ends_with('/')) {
        return "is a link to a folder; name it without '/'";
    }
    if (item.IsArchiveRoot()) return "is a whole archive; name it without '/'";
    if (item.archive && item.archive->IsMember()) return "an archive in an archive can only be read";
    if (item.facts.IsMissing() && !item.facts.isLink) return "no such file";
    if (!item.archive && (name.empty() || name == "." || name == "..")) return "is a folder that is in use";
    if (item.facts.IsFolder() && !item.facts.isLink && !options.recursive) return "is a folder (-r removes folders)";
    if (item.archive && !options.force && FindProtected(*item.node) != nullptr) return kProtected;
    return "";
}

}  // namespace

void MakeFolders(const std::vector<std::string>& paths, bool parents, StorageReport& report) {
    StorageTree tree;
    std::vector<StorageItem> members;
    PlannedFolders planned;
    for (const std::string& path : paths) {
        std::string problem;
        const std::optional<StorageItem> item = FindPlace(tree, path, parents, planned, problem);
        if (item) problem = WhyNotMade(*item, parents, planned);
        if (!item || !problem.empty()) {
            report.Fail(path, problem);
        } else if (item->facts.IsFolder()) {
            continue;
        } else if (item->archive) {
            members.push_back(*item);
            planned.Add(*item);
        } else {
            MakeNativeFolders(item->native, parents, report);
        }
    }
    const auto add = [](SafeEdit& edit, const StorageItem& folder, std::string& problem) {
        return edit.AddFolder(folder.inner, problem);
    };
    EditMembers(members, false, add, report);
}

void MakeArchives(const std::vector<std::string>& paths, StorageReport& report) {
    StorageTree tree;
    for (const std::string& path : paths) {
        std::string problem;
        if (!MakeArchive(tree, path, problem)) report.Fail(path, problem);
    }
}

void RemoveNative(const std::string& path, const std::string& shown, bool force, StorageReport& report) {
    struct Place {
        std::string path;
        std::string shown;
        bool emptied;
    };
    std::vector<Place> pending = {{path, shown, false}};
    while (!pending.empty()) {
        const Place place = pending.back();
        std::error_code error;
        if (!place.emptied && IsNativeFolder(place.path)) {
            pending.back().emptied = true;
            for (const std::string& name : NamesIn(place.path, error)) {
                pending.push_back({place.path + "/" + name, place.shown + "/" + name, false});
            }
            if (error) report.Fail(place.shown, SystemFailure(error.value()).text);
            continue;
        }
        pending.pop_back();
        if (!force && IsNativeFile(place.path) && IsWriteProtected(place.path)) {
            report.Fail(place.shown, kProtected);
        } else if ((place.emptied ? rmdir(place.path.c_str()) : unlink(place.path.c_str())) != 0) {
            report.Fail(place.shown, SystemFailure(errno).text);
        }
    }
}

void RemovePaths(const std::vector<std::string>& paths, const RemoveOptions& options, StorageReport& report) {
    StorageTree tree;
    std::vector<StorageItem> members;
    for (const std::string& path : paths) {
        std::string problem = "no such file";
        const std::optional<StorageItem> item = tree.Find(path, problem);
        if (item) problem = WhyNotRemoved(*item, options);
        if (!problem.empty()) {
            if (!options.force || problem != "no such file") report.Fail(path, problem);
        } else if (item->archive) {
            members.push_back(*item);
        } else {
            RemoveNative(item->native, path, options.force, report);
        }
    }
    const auto remove = [](SafeEdit& edit, const StorageItem& member, std::string& problem) {
        return edit.Remove(member.inner, problem);
    };
    EditMembers(members, options.force, remove, report);
}

}  // namespace ZEMA

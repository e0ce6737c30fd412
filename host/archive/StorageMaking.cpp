#include "host/archive/StorageMaking.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
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

std::string WhyNot(const StorageItem& item, bool parents, const PlannedFolders& planned) {
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

}  // namespace

void MakeFolders(const std::vector<std::string>& paths, bool parents, StorageReport& report) {
    StorageTree tree;
    std::vector<StorageItem> members;
    PlannedFolders planned;
    for (const std::string& path : paths) {
        std::string problem;
        const std::optional<StorageItem> item = FindPlace(tree, path, parents, planned, problem);
        if (item) problem = WhyNot(*item, parents, planned);
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

}  // namespace ZEMA

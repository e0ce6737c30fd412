#include "host/archive/StorageRemoval.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "host/archive/ArchiveEdits.h"
#include "host/archive/StorageTree.h"
#include "host/system/Paths.h"

namespace ZEMA {

namespace {

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
std::string WhyNot(const StorageItem& item, const RemoveOptions& options) {
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
        if (item) problem = WhyNot(*item, options);
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

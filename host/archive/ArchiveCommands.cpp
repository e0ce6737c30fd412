// Making and removing: wqf mkdir, new and rm.
#include "host/archive/ArchiveCommands.h"

#include <sys/stat.h>

#include <ctime>
#include <map>

#include "core/BasicMap.h"
#include "host/archive/ArchiveEdits.h"
#include "host/archive/ExtendedAttributes.h"
#include "host/archive/StorageTree.h"
#include "host/system/FileDescriptor.h"

namespace ZEMA {

namespace {

// Begins the edits of all archives that the paths lead into.
void BeginEdits(const std::vector<std::string>& paths, bool force, ArchiveEdits& edits) {
    std::set<std::string> archives;
    for (const std::string& path : paths) {
        const std::string file = StorageTree::FileOn(path);
        if (file.size() < path.size()) archives.insert(file);
    }
    archives.erase("");
    edits.Begin(archives, force);
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

// Makes folders in archives, each of which may lie in one that came earlier on the line.
class FolderMaker {
public:
    FolderMaker(bool parents, ArchiveEdits& edits, StorageReport& report)
        : parents_(parents), edits_(edits), report_(report) {}

    void Make(const std::string& path) {
        const Result<StorageItem> item = FindPlace(path);
        if (const Failure failure = item ? WhyNot(*item) : item.Why()) return report_.Fail(path, failure.text);
        if (!item->facts.IsFolder() && edits_.CanEdit(item->native, *item->archive)) Add(*item);
    }

private:
    using Spellings = BasicMap<String, std::string, StringCaseInsensitiveLess<String>>;

    // Without `parents` the folder around it must be there, or have been made.
    Result<StorageItem> FindPlace(const std::string& path) {
        const Result<StorageItem> found = tree_.Find(path);
        if (found) return found;
        const Result<StorageItem> item = FindWithParents(tree_, path);
        return item && (parents_ || HasParent(*item)) ? item : found;
    }

    bool HasParent(const StorageItem& item) const {
        if (!item.archive || item.inner.Empty()) return false;
        BasicArray<String> parent = item.inner;
        parent.PopBack();
        return FindMade(item.native, parent) != nullptr;
    }

    Failure WhyNot(const StorageItem& item) const {
        if (!item.archive) return Refusal("it does not lie in an archive; use mkdir");
        const bool made = FindMade(item.native, item.inner) != nullptr;
        if (parents_ && (item.facts.IsFolder() || made)) return {};
        if (!item.facts.IsMissing() || made) return Refusal("it is there already");
        if (item.archive->IsMember()) return Refusal("an archive in an archive can only be read");
        for (const String& name : item.inner) {
            if (name.IsEmpty() || name == String("..")) return Refusal("the name cannot stand in an archive");
        }
        return {};
    }

    // With those that are missing on the way.
    void Add(const StorageItem& item) {
        const MemberNames& names = **item.archive->Names();
        BasicArray<String> path;
        std::string bytes, spelling;
        const ZipTreeNode* node = &item.archive->Root();
        for (const String& part : item.inner) {
            const std::string name(part.ToAString().View());
            path.PushBack(part);
            bytes += (bytes.empty() ? "" : "/") + name;
            node = node == nullptr ? nullptr : node->FindChild(part);
            if (const std::string* const made = FindMade(item.native, path)) {
                spelling = *made;
            } else if (node != nullptr) {
                spelling = names.SpellingOf(path, bytes);
            } else {
                spelling += (spelling.empty() ? "" : "/") + name;
                edits_.Change(item.native)->AddFolder({spelling + "/", std::time(nullptr), 0777 & ~CurrentUmask()});
                made_[item.native].Insert(Key(path), spelling);
            }
        }
    }

    static String Key(const BasicArray<String>& path) {
        String key;
        for (const String& part : path) {
            key.Append("/");
            key.Append(part);
        }
        return key;
    }

    const std::string* FindMade(const std::string& archive, const BasicArray<String>& path) const {
        const auto folders = made_.find(archive);
        if (folders == made_.end()) return nullptr;
        const auto found = folders->second.Find(Key(path));
        return found == folders->second.end() ? nullptr : &(*found).second;
    }

    const bool parents_;
    ArchiveEdits& edits_;
    StorageReport& report_;
    StorageTree tree_;
    std::map<std::string, Spellings> made_;  // by the archive
};

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
    const Result<std::unique_ptr<ArchiveRewrite>> archive = ArchiveRewrite::BeginNew(path, {});
    return archive ? (*archive)->Commit() : archive.Why();
}

Failure WhyNotRemoved(const StorageItem& item) {
    if (!item.archive) {
        const bool missing = item.facts.IsMissing() && !item.facts.isLink;
        return missing ? WhyMissing(item.facts) : Refusal("it does not lie in an archive; use rm");
    }
    if (item.archive->IsMember()) return Refusal("an archive in an archive can only be read");
    if (item.inner.Empty()) return Refusal("is a whole archive; use rm");
    return {};
}

// A folder goes with all that is spelled like it, whether or not a path leads there. What only paths take for a part of
// it stays.
Failure RemoveMember(const StorageItem& item, const RemoveOptions& options, ArchiveEdits& edits,
                     StorageReport& report) {
    const MemberNames& names = **item.archive->Names();
    const std::string spelling = names.SpellingOf(item.inner, item.innerBytes);
    MemberNames::Numbers members = names.FilesAt(spelling);
    const MemberNames::Numbers inside = names.Inside(spelling);
    members.insert(members.end(), inside.begin(), inside.end());
    if (members.empty()) return WhyMissing(item.facts);
    if (!inside.empty() && !options.recursive) return Refusal("is a folder (-r removes folders)");
    for (const std::uint32_t member : members) {
        if (!options.force && !names.IsWritable(member)) return Refusal("it is write-protected (-f removes it)");
    }
    for (const std::uint32_t member : members) edits.Change(item.native)->Remove(member);
    if (!options.recursive) return {};
    for (const std::uint32_t other : names.OthersInside(item.inner, spelling)) {
        report.Fail(item.shown, "'" + std::string(names.Name(other)) + "' is spelled otherwise, and stays");
    }
    return {};
}

}  // namespace

void MakeFolders(const std::vector<std::string>& paths, const MakeOptions& options, StorageReport& report) {
    ArchiveEdits edits(report);
    BeginEdits(paths, options.force, edits);
    FolderMaker maker(options.parents, edits, report);
    for (const std::string& path : paths) maker.Make(path);
    edits.CommitAll();
}

void MakeArchives(const std::vector<std::string>& paths, StorageReport& report) {
    StorageTree tree;
    for (const std::string& path : paths) {
        if (const Failure failure = MakeArchive(tree, path)) report.Fail(path, failure.text);
    }
}

void RemovePaths(const std::vector<std::string>& paths, const RemoveOptions& options, StorageReport& report) {
    ArchiveEdits edits(report);
    BeginEdits(paths, options.force, edits);
    StorageTree tree;
    for (const std::string& path : paths) {
        const Result<StorageItem> item = tree.Find(path);
        Failure failure = item ? WhyNotRemoved(*item) : item.Why();
        if (!failure && !edits.CanEdit(item->native, *item->archive)) continue;
        if (!failure) failure = RemoveMember(*item, options, edits, report);
        if (failure && !(options.force && failure.kind == FailureKind::Missing)) report.Fail(path, failure.text);
    }
    edits.CommitAll();
}

}  // namespace ZEMA

#include "host/CopyPlan.h"

#include <sys/stat.h>

#include <filesystem>
#include <iterator>
#include <utility>

#include "host/ArchiveEdits.h"
#include "host/ReplacementFile.h"
#include "storage/zip/ZipFormat.h"

namespace ZEMA {

namespace {

// The name under which a thing goes into a folder; empty for a folder without one, whose contents go in by themselves.
std::string OwnName(const StorageItem& item) {
    if (item.archive && !item.inner.Empty()) return std::string(item.node->Name().ToAString().View());
    const std::string name = NameOf(item.native);
    return name == "." || name == ".." ? std::string() : name;
}

bool IsSameFile(const StorageItem& a, const StorageItem& b) {
    if (a.archive || b.archive) return a.archive == b.archive && a.node == b.node;
    struct stat first, second;
    return stat(a.native.c_str(), &first) == 0 && stat(b.native.c_str(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

bool IsInside(const std::string& path, const std::string& folder) {
    return path == folder || folder == "/" || path.starts_with(folder + "/");
}

// Whether the target lies in the source, or is it.
bool LiesIn(const StorageItem& target, const StorageItem& source) {
    if (!source.archive) return IsInside(RealPath(target.native), RealPath(source.native));
    if (source.archive != target.archive || source.inner.Size() > target.inner.Size()) return false;
    for (std::size_t i = 0; i < source.inner.Size(); ++i) {
        if (!source.inner[i].EqualsNoCaseAt(0, npos, target.inner[i])) return false;
    }
    return true;
}

// For comparing the names of targets; bytes that are no text stay apart from each other.
String NameKey(const std::string& path) {
    if (const std::optional<String> name = MemberName(path)) return *name;
    std::string escaped;
    for (const char byte : path) {
        escaped += (byte & 0x80) != 0 ? "//" + std::to_string(static_cast<unsigned char>(byte)) : std::string(1, byte);
    }
    return String(escaped.c_str());
}

bool IsProtected(const StorageItem& target) {
    return target.archive ? !target.facts.flags.Has(ElementFlags::kWritable) : IsWriteProtected(target.native);
}

}  // namespace

bool CopyPlan::Refuse(const std::string& path, const std::string& reason) {
    report_.Fail(path, reason);
    return false;
}

void CopyPlan::LeaveOut(const StorageItem& source, const std::string& reason) {
    report_.Fail(source.shown, reason);
    operands_.back().complete = false;
}

bool CopyPlan::Make(const std::vector<std::string>& sources, const std::string& target) {
    if (!FindTarget(sources, target)) return false;
    for (const std::string& source : sources) {
        if (!AddOperand(source)) return false;
    }
    return !RefusesSideBySide() && !RefusesSizes();
}

bool CopyPlan::IsArchiveFile(const std::string& path) {
    std::string problem;
    const std::optional<StorageItem> item = tree_.Find(path, problem);
    if (!item || !item->facts.IsFile()) return false;
    const std::optional<StorageItem> entered = tree_.Enter(*item, problem);
    return entered && entered->facts.IsFolder();
}

bool CopyPlan::FindTarget(const std::vector<std::string>& sources, const std::string& target) {
    std::string problem;
    std::optional<StorageItem> item = tree_.Find(target, problem);
    if (!item) return Refuse(target, problem);
    const bool replaced = !item->archive && sources.size() == 1 && IsArchiveFile(sources[0]);
    if (item->facts.IsFile() && !replaced) item = tree_.Enter(*item, problem);
    if (!item) return Refuse(target, problem);
    target_ = *item;
    intoTarget_ = target_.facts.IsFolder();
    if (sources.size() > 1 && !intoTarget_) return Refuse(target, "is no folder, and there are several sources");
    if (target_.archive && target_.archive->IsMember()) {
        return Refuse(target, "an archive in an archive can only be read");
    }
    return true;
}

bool CopyPlan::AddOperand(const std::string& path) {
    std::string problem;
    const std::optional<StorageItem> found = tree_.Find(path, problem);
    const bool leads = found && (!found->facts.IsMissing() || (options_.move && found->facts.isLink));
    if (!leads) report_.Fail(path, problem.empty() ? "no such file" : problem);
    if (!leads) return true;
    const StorageItem& source = *found;
    operands_.push_back({source});
    if (source.facts.IsFolder() && !options_.recursive) {
        LeaveOut(source, "is a folder (-r copies folders)");
        return true;
    }
    if (options_.move && source.archive && source.archive->IsMember()) {
        return Refuse(path, "an archive in an archive can only be read");
    }
    if (options_.move && source.IsArchiveRoot()) return Refuse(path, "is a whole archive; name it without '/'");
    const std::string name = OwnName(source);
    const StorageItem target = intoTarget_ && !name.empty() ? tree_.Child(target_, name) : target_;
    if (RefusesPair(source, target)) return false;
    if (!CanRename(source, target)) return AddTree(source, target);
    if (RefusesName(target)) return false;
    if (Takes(source, target)) steps_.push_back({source, target, operands_.size() - 1, true});
    return true;
}

// What cannot be right for the operand as a whole.
bool CopyPlan::RefusesPair(const StorageItem& source, const StorageItem& target) {
    struct stat status;
    if (options_.move && source.facts.isLink) return false;  // the link itself goes, wherever it leads
    if (!source.archive && target.archive && stat(source.native.c_str(), &status) == 0 &&
        target.archive->IsOf(status)) {
        return !Refuse(source.shown, "an archive does not go into itself");
    }
    if (source.facts.IsFolder() && LiesIn(target, source)) {
        return !Refuse(source.shown, "a folder does not go into itself");
    }
    return false;
}

bool CopyPlan::CanRename(const StorageItem& source, const StorageItem& target) const {
    struct stat from, to;
    return options_.move && !source.archive && !target.archive && lstat(source.native.c_str(), &from) == 0 &&
           stat(FolderOf(target.native).c_str(), &to) == 0 && from.st_dev == to.st_dev;
}

// Whether the source goes to the target; a failure is told, and so is a link that is left out.
bool CopyPlan::Takes(const StorageItem& source, const StorageItem& target) {
    const StorageFacts& there = target.facts;
    const bool below = steps_.size() > 0 && steps_.back().operand == operands_.size() - 1;
    const bool rename = CanRename(source, target);
    std::string reason;
    if (source.facts.isLink && !rename && (below || options_.move)) {
        reason = "is a link and is left out";
    } else if (source.facts.kind == StorageKind::Other && !rename) {
        reason = "is neither a file nor a folder";
    } else if (target.archive && (target.inner.Empty() ? !source.facts.IsFolder() : target.inner.Back().IsEmpty())) {
        reason = "its name is not UTF-8, and cannot stand in an archive";
    } else if (!there.IsMissing() && IsSameFile(source, target)) {
        reason = "is the same file as '" + target.shown + "'";
    } else if (there.kind == StorageKind::Other || (there.isLink && there.IsMissing())) {
        reason = "'" + target.shown + "' is there and is no file";
    } else if (there.IsMissing() && target.shown.ends_with('/') && !source.facts.IsFolder()) {
        reason = "'" + target.shown + "' is no folder";
    } else if (there.IsFolder() && !source.facts.IsFolder()) {
        reason = "'" + target.shown + "' is a folder";
    } else if (there.IsFile() && source.facts.IsFolder()) {
        reason = "'" + target.shown + "' is there and is no folder";
    } else if (there.IsFile() && options_.keepExisting) {
        operands_.back().complete = false;
        return false;
    } else if (there.IsFile() && !options_.force && IsProtected(target)) {
        reason = "'" + target.shown + "' is write-protected (-f replaces it)";
    } else {
        return true;
    }
    LeaveOut(source, reason);
    return false;
}

// Trees may be of any depth, so what is still to be looked at is a list.
bool CopyPlan::AddTree(const StorageItem& source, const StorageItem& target) {
    const std::size_t operand = operands_.size() - 1;
    std::vector<Step> pending = {{source, target, operand, false}};
    while (!pending.empty()) {
        const Step step = std::move(pending.back());
        pending.pop_back();
        if (!Takes(step.source, step.target)) continue;
        if (RefusesName(step.target)) return false;
        steps_.push_back(step);
        if (step.source.facts.IsFolder() && !AddChildren(step.source, step.target, pending)) return false;
    }
    return true;
}

bool CopyPlan::AddChildren(const StorageItem& folder, const StorageItem& target, std::vector<Step>& pending) {
    std::vector<StorageEntry> entries;
    std::string problem;
    if (options_.move && target.facts.IsFolder()) {
        if (!tree_.List(target, entries, problem) || !entries.empty()) {
            LeaveOut(folder, "'" + target.shown + "' is there and is not empty");
            steps_.pop_back();
            return true;
        }
    }
    if (!tree_.List(folder, entries, problem)) LeaveOut(folder, problem);
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
        const StorageItem child = tree_.Child(folder, entry->name);
        pending.push_back({child, tree_.Child(target, entry->name), operands_.size() - 1, false});
    }
    return true;
}

// The storage tree does not tell names apart that differ only in case.
bool CopyPlan::RefusesName(const StorageItem& target) {
    if (target.node == target_.node && target.native == target_.native && intoTarget_) return false;
    if (names_.Insert(NameKey(target.shown))) return false;
    return !Refuse(target.shown, "two of the sources would go there (names that differ only in case are the same)");
}

// Nor "x" and "x.zip": an archive is also found without its ending.
bool CopyPlan::RefusesSideBySide() {
    for (const String& name : names_) {
        String archive = name;
        archive.Append(".zip");
        if (!names_.Contains(archive)) continue;
        const std::string shown(name.ToAString().View());
        return !Refuse(shown, "'" + shown + ".zip' would stand beside it, and the two cannot be told apart");
    }
    return false;
}

bool CopyPlan::RefusesSizes() {
    if (!target_.archive) return false;
    std::uint64_t count = target_.archive->Volume().EndRecord().entryCount;
    for (const Step& step : steps_) {
        if (step.source.facts.size > kMaxOffset) return !Refuse(step.source.shown, "it is too large for an archive");
        if (step.target.facts.IsMissing()) ++count;
    }
    if (count <= kMaxEntries) return false;
    return !Refuse(target_.shown, "it would have " + std::to_string(count) + " members, and 65535 is the most");
}

}  // namespace ZEMA

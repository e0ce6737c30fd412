#include "host/archive/CopyPlan.h"

#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "host/archive/ArchiveComparison.h"
#include "host/archive/ArchiveEdits.h"
#include "host/system/Paths.h"
#include "storage/zip/ZipFormat.h"

namespace ZEMA {

namespace {

Failure Refusal(std::string text) {
    return {FailureKind::Refused, std::move(text)};
}

// The name under which a thing goes into a folder; empty for a folder without one, whose contents go in by themselves.
std::string OwnName(const StorageItem& item) {
    if (item.archive && !item.inner.Empty()) return std::string(item.node->Name().ToAString().View());
    const std::string name = NameOf(item.archive && item.archive->IsMember() ? item.shown : item.native);
    return name == "." || name == ".." ? std::string() : name;
}

bool IsSameFile(const StorageItem& a, const StorageItem& b) {
    if (a.archive || b.archive) return a.archive == b.archive && a.node == b.node;
    struct stat first, second;
    return stat(a.native.c_str(), &first) == 0 && stat(b.native.c_str(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

// Whether the stored name of a member is that path or lies below it.
bool LiesBelow(std::string name, const BasicArray<String>& path) {
    for (const String& part : path) {
        const std::string first = name.substr(0, name.find('/'));
        const std::optional<String> text = MemberName(first);
        if (!text || !text->EqualsNoCaseAt(0, npos, part)) return false;
        name.erase(0, first.size() + 1);
    }
    return true;
}

bool IsProtected(const StorageItem& target) {
    return target.archive ? !target.facts.flags.Has(ElementFlags::kWritable) : IsWriteProtected(target.native);
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

}  // namespace

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

bool CopyPlan::FindTarget(const std::vector<std::string>& sources, const std::string& target) {
    Result<StorageItem> item = tree_.Find(target);
    if (item) item = tree_.Enter(*item);
    if (!item) return Refuse(target, item.Why().text);
    target_ = *item;
    intoTarget_ = target_.facts.IsFolder();
    if (sources.size() > 1 && !intoTarget_) return Refuse(target, "is no folder, and there are several sources");
    if (target_.archive && target_.archive->IsMember()) {
        return Refuse(target, "an archive in an archive can only be read");
    }
    return true;
}

bool CopyPlan::AddOperand(const std::string& path) {
    const Result<StorageItem> found = tree_.Find(path);
    const bool leads = found && (!found->facts.IsMissing() || (options_.move && found->facts.isLink));
    if (!leads) report_.Fail(path, found ? WhyMissing(found->facts).text : found.Why().text);
    if (!leads) return true;
    const StorageItem& source = *found;
    operands_.push_back({source, {}});
    if (!source.archive && !target_.archive) {
        const std::string command = options_.move ? "mv" : "cp";
        LeaveOut(source, "neither it nor '" + target_.shown + "' lies in an archive; use " + command);
        return true;
    }
    if (source.facts.IsFolder() && !options_.recursive) {
        LeaveOut(source, "is a folder (-r copies folders)");
        return true;
    }
    if (options_.move && source.archive && source.archive->IsMember()) {
        return Refuse(path, "an archive in an archive can only be read");
    }
    if (options_.move && source.IsArchiveRoot()) return Refuse(path, "is a whole archive; name it without '/'");
    const std::string name = intoTarget_ ? OwnName(source) : std::string();
    const Pending top = {source, name.empty() ? target_ : tree_.Child(target_, name), kNoStep, name};
    operands_.back().target = top.target;
    return !RefusesPair(source, top.target) && AddTree(top);
}

// Whether the source goes to the target; a failure is told, and so is a link that is left out.
bool CopyPlan::Takes(const StorageItem& source, const StorageItem& target) {
    const StorageFacts& there = target.facts;
    const bool isThere = !there.IsMissing() || there.isLink;
    const bool folders = there.IsFolder() || source.facts.IsFolder();
    if (options_.keepExisting && isThere && !folders && !IsSameFile(source, target)) {
        operands_.back().complete = false;
        return false;
    }
    const Failure failure = WhyNot(source, target);
    if (failure) LeaveOut(source, failure.text);
    return !failure;
}

// The order tells what is the matter with the source before it finds fault with the target.
Failure CopyPlan::WhyNot(const StorageItem& source, const StorageItem& target) {
    const StorageFacts& there = target.facts;
    const bool below = !steps_.empty() && steps_.back().operand == operands_.size() - 1;
    const std::string name = "'" + target.shown + "'";
    if (source.facts.isLink && (below || options_.move)) return Refusal("is a link and is left out");
    if (source.facts.IsMissing()) return WhyMissing(source.facts);
    if (source.facts.kind == StorageKind::Other) return Refusal("is neither a file nor a folder");
    if (target.archive && (target.inner.Empty() ? !source.facts.IsFolder() : target.inner.Back().IsEmpty())) {
        return Refusal("its name is not UTF-8, and cannot stand in an archive");
    }
    if (there.error != 0 && !there.isLink) return SystemFailure(there.error).In(name);
    if (!there.IsMissing() && IsSameFile(source, target)) return Refusal("is the same file as " + name);
    if (there.isLink && there.IsMissing() && !options_.move) return Refusal(name + " is a link that leads nowhere");
    if (there.kind == StorageKind::Other) return Refusal(name + " is there and is no file");
    if (there.IsMissing() && target.shown.ends_with('/') && !source.facts.IsFolder()) {
        return Refusal(name + " is no folder");
    }
    if (there.IsFolder() && !source.facts.IsFolder()) return Refusal(name + " is a folder");
    if (there.IsFile() && source.facts.IsFolder()) return Refusal(name + " is there and is no folder");
    return there.IsFile() ? WhyNotReplaced(target) : Failure();
}

Failure CopyPlan::WhyNotReplaced(const StorageItem& target) {
    const std::string name = "'" + target.shown + "'";
    if (!options_.force && IsProtected(target)) return Refusal(name + " is write-protected (-f replaces it)");
    // A member that cannot be opened is of no use to anybody.
    if (target.archive && !OpenMemberFile(target.archive->Volume(), *target.node)) return {};
    const Result<StorageItem> entered = tree_.Enter(target);
    if (!entered) return entered.Why().In(name);
    if (entered->facts.IsFolder()) return Refusal(name + " is an archive, and no archive is replaced");
    return {};
}

// Trees may be of any depth, so what is still to be looked at is a list.
bool CopyPlan::AddTree(const Pending& top) {
    std::vector<Pending> pending = {top};
    while (!pending.empty()) {
        const Pending next = std::move(pending.back());
        pending.pop_back();
        if (RefusesLength(next)) return false;
        if (!Takes(next.source, next.target)) continue;
        if (RefusesName(next)) return false;
        AddStep(next);
        if (next.source.facts.IsFolder()) AddChildren(next, pending);
    }
    // Of a file that is copied the user has named the one that paths lead to.
    if (top.source.archive && (options_.move || top.source.facts.IsFolder())) TellOfHiddenFiles(top.source);
    return true;
}

void CopyPlan::TellOfHiddenFiles(const StorageItem& source) {
    for (const std::string& name : NamesOfHiddenFiles(source.archive->Volume())) {
        if (!LiesBelow(name, source.inner)) continue;
        LeaveOut(source,
                 "its member '" + name + "' is left out: another one has that name, or it is no name for a file");
    }
}

void CopyPlan::AddChildren(const Pending& folder, std::vector<Pending>& pending) {
    std::vector<StorageEntry> entries;
    if (options_.move && folder.target.facts.IsFolder()) {
        const Failure failure = tree_.List(folder.target, entries);
        if (failure || !entries.empty()) {
            LeaveOut(folder.source, "'" + folder.target.shown + "' is there and is not empty");
            steps_.pop_back();
            return;
        }
    }
    if (const Failure failure = tree_.List(folder.source, entries)) LeaveOut(folder.source, failure.text);
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
        const std::string& name = entry->name;
        const std::size_t step = steps_.size() - 1;
        pending.push_back({tree_.Child(folder.source, name), tree_.Child(folder.target, name), step, name});
    }
}

void CopyPlan::AddStep(const Pending& pending) {
    const StorageItem& source = pending.source;
    const StorageItem& target = pending.target;
    steps_.push_back(
        {{source.node, source.facts}, {target.node, target.facts}, operands_.size() - 1, pending.folder, pending.name});
}

StorageItem CopyPlan::SourceOf(const Step& step) const {
    return ItemBelow(operands_[step.operand].source, step, step.source);
}

StorageItem CopyPlan::TargetOf(const Step& step) const {
    return ItemBelow(operands_[step.operand].target, step, step.target);
}

StorageItem CopyPlan::ItemBelow(const StorageItem& top, const Step& step, const Place& place) const {
    std::vector<const std::string*> names;
    for (const Step* at = &step; at->folder != kNoStep; at = &steps_[at->folder]) names.push_back(&at->name);
    StorageItem item = top;
    for (auto name = names.rbegin(); name != names.rend(); ++name) AppendName(item, **name);
    item.node = place.node;
    item.facts = place.facts;
    return item;
}

bool CopyPlan::Refuse(const std::string& path, const std::string& reason) {
    report_.Fail(path, reason);
    return false;
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

bool CopyPlan::RefusesLength(const Pending& pending) {
    if (std::max(pending.source.shown.size(), pending.target.shown.size()) <= kLongestPath) return false;
    const std::string limit = std::to_string(kLongestPath);
    return !Refuse(operands_.back().source.shown, "a path would be longer than " + limit + " bytes");
}

// The storage tree does not tell names apart that differ only in case.
bool CopyPlan::RefusesName(const Pending& pending) {
    if (pending.name.empty()) return false;
    // What goes into the target by itself has no step of its own there.
    const bool top = pending.folder == kNoStep || steps_[pending.folder].name.empty();
    if (names_[top ? kNoStep : pending.folder].Insert(NameKey(pending.name))) return false;
    return !Refuse(pending.target.shown,
                   "two of the sources would go there (names that differ only in case are the same)");
}

// Nor "x" and "x.zip": an archive is also found without its ending.
bool CopyPlan::RefusesSideBySide() {
    for (const auto& [folder, names] : names_) {
        for (const String& name : names) {
            String archive = name;
            archive.Append(".zip");
            if (!names.Contains(archive)) continue;
            StorageItem item = folder == kNoStep ? target_ : TargetOf(steps_[folder]);
            AppendName(item, std::string(name.ToAString().View()));
            return !Refuse(item.shown,
                           "'" + item.shown + ".zip' would stand beside it, and the two cannot be told apart");
        }
    }
    return false;
}

bool CopyPlan::RefusesSizes() {
    if (!target_.archive) return false;
    std::uint64_t count = target_.archive->Volume().EndRecord().entryCount;
    for (const Step& step : steps_) {
        if (step.source.facts.size > kMaxOffset) {
            return !Refuse(SourceOf(step).shown, "it is too large for an archive");
        }
        if (step.target.facts.IsMissing()) ++count;
    }
    if (count <= kMaxEntries) return false;
    return !Refuse(target_.shown, "it would have " + std::to_string(count) + " members, and 65535 is the most");
}

}  // namespace ZEMA

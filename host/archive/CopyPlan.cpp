#include "host/archive/CopyPlan.h"

#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "host/archive/MemberNames.h"
#include "host/system/Paths.h"
#include "storage/zip/ZipFormat.h"

namespace ZEMA {

namespace {

// The name under which a thing goes into a folder; empty for a folder without one, whose contents go in by themselves.
std::string OwnName(const StorageItem& item) {
    if (item.archive && !item.inner.Empty()) {
        const auto& names = item.archive->Names();
        return names ? NameOf((*names)->SpellingOf(item.inner, item.innerBytes))
                     : std::string(item.node->Name().ToAString().View());
    }
    const std::string name = NameOf(item.archive && item.archive->IsMember() ? item.shown : item.native);
    return name == "." || name == ".." ? std::string() : name;
}

bool IsSameItem(const StorageItem& a, const StorageItem& b) {
    if (a.archive || b.archive) return a.archive == b.archive && a.node == b.node;
    struct stat first, second;
    return stat(a.native.c_str(), &first) == 0 && stat(b.native.c_str(), &second) == 0 && IsSameFile(first, second);
}

// Whether the target is a name for the source itself that differs from its own in case, and that no member has.
bool IsRespelling(const StorageItem& source, const StorageItem& target) {
    if (!source.archive || !IsSameItem(source, target)) return false;
    const MemberNames& names = **source.archive->Names();
    return !names.IsThere(names.NewSpellingOf(target.inner, target.innerBytes));
}

// Whether a member is a symbolic link, whose contents are a path.
bool IsLinkMember(const StorageItem& item) {
    if (!item.archive || !item.archive->Names() || !item.node || item.node->Header() == nullptr) return false;
    const MemberNames& names = **item.archive->Names();
    return S_ISLNK(names.Entry(names.NumberOf(*item.node->Header())).UnixMode());
}

// A member whose packed bytes nobody here can unpack.
bool IsUnreadable(const StorageItem& item) {
    return item.archive && item.facts.IsFile() && !OpenMemberFile(item.archive->Volume(), *item.node);
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
    hasSeveralSources_ = sources.size() > 1;
    if (!FindTarget(target)) return false;
    for (const std::string& source : sources) {
        if (!AddOperand(source)) return false;
    }
    return !RefusesSideBySide() && !RefusesSizes();
}

bool CopyPlan::FindTarget(const std::string& target) {
    Result<StorageItem> item = tree_.Find(target);
    // What cannot be opened is no folder, and may be replaced.
    if (item && !IsUnreadable(*item)) item = tree_.Enter(*item);
    if (!item) return Refuse(target, item.Why().text);
    target_ = *item;
    intoTarget_ = target_.facts.IsFolder();
    if (target_.archive && target_.archive->IsMember()) {
        return Refuse(target, "an archive in an archive can only be read");
    }
    return !target_.archive || edits_.CanEdit(target_.native, *target_.archive);
}

bool CopyPlan::AddOperand(const std::string& path) {
    const Result<StorageItem> found = tree_.Find(path);
    const bool leads = found && (!found->facts.IsMissing() || (options_.move && found->facts.isLink));
    if (!leads) report_.Fail(path, found ? WhyMissing(found->facts).text : found.Why().text);
    if (!leads) return true;
    operands_.push_back({*found, {}});
    return AddSource(*found);
}

bool CopyPlan::AddSource(const StorageItem& source) {
    if (!source.archive && !target_.archive) {
        const std::string command = options_.move ? "mv" : "cp";
        LeaveOut(source, "neither it nor '" + target_.shown + "' lies in an archive; use " + command);
        return true;
    }
    if (hasSeveralSources_ && !intoTarget_) {
        return Refuse(target_.shown, "is no folder, and there are several sources");
    }
    if (source.facts.IsFolder() && !options_.recursive) {
        LeaveOut(source, "is a folder (-r copies folders)");
        return true;
    }
    if (options_.move && source.archive && source.archive->IsMember()) {
        return Refuse(source.shown, "an archive in an archive can only be read");
    }
    if (options_.move && source.IsArchiveRoot()) return Refuse(source.shown, "is a whole archive; name it without '/'");
    if (options_.move && source.archive && !edits_.CanEdit(source.native, *source.archive)) {
        operands_.back().complete = false;
        return true;
    }
    if (const Failure failure = WhyNotNamed(source)) {
        LeaveOut(source, failure.text);
        return true;
    }
    const bool respells = options_.move && IsRespelling(source, target_);
    const std::string name = intoTarget_ && !respells ? OwnName(source) : std::string();
    Pending top = {source, name.empty() ? target_ : tree_.Child(target_, name), kNoStep, name};
    if (respells) {  // the name is free: what is there goes away by getting it
        top.target.node.Reset();
        top.target.facts = StorageFacts();
    }
    operands_.back().target = top.target;
    if (!respells && RefusesPair(source, top.target)) return false;
    return options_.move && source.archive && source.archive == target_.archive ? AddRename(top) : AddTree(top);
}

// Whether the name says which member is meant: of several, paths lead to one.
Failure CopyPlan::WhyNotNamed(const StorageItem& source) const {
    if (!source.archive || !source.facts.IsFile() || !source.archive->Names()) return {};
    const MemberNames& names = **source.archive->Names();
    const MemberNames::Numbers files = names.FilesAt(names.SpellingOf(source.inner, source.innerBytes));
    const std::uint32_t seen = names.NumberOf(*source.node->Header());
    if (std::find(files.begin(), files.end(), seen) == files.end()) {
        return Refusal("no path leads to it, but to '" + std::string(names.Name(seen)) + "'");
    }
    if (options_.move && files.size() > 1) return Refusal("several members have this name");
    return {};
}

// Whether the source goes to the target; a failure is told, and so is a link that is left out.
bool CopyPlan::Takes(const StorageItem& source, const StorageItem& target) {
    const StorageFacts& there = target.facts;
    const bool isThere = !there.IsMissing() || there.isLink;
    const bool folders = there.IsFolder() || source.facts.IsFolder();
    if (options_.keepExisting && isThere && !folders && !IsSameItem(source, target)) {
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
    const bool isLink = source.archive ? !target.archive && IsLinkMember(source) : source.facts.isLink;
    if (isLink && (below || options_.move || source.archive)) return Refusal("is a link and is left out");
    if (source.facts.IsMissing()) return WhyMissing(source.facts);
    if (source.facts.kind == StorageKind::Other) return Refusal("is neither a file nor a folder");
    if (target.archive && (target.inner.Empty() ? !source.facts.IsFolder() : target.inner.Back().IsEmpty())) {
        return Refusal("its name is not UTF-8, and cannot stand in an archive");
    }
    if (there.error != 0 && !there.isLink) return SystemFailure(there.error).In(name);
    if (!there.IsMissing() && IsSameItem(source, target)) return Refusal("is the same file as " + name);
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
    if (IsUnreadable(target)) return {};
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
        AddStep(next, false);
        if (next.source.facts.IsFolder()) AddChildren(next, pending);
        if (options_.recursive) LeaveOutBelowFile(next.source);
    }
    // Of a file that is copied the user has named the one that paths lead to.
    if (top.source.archive && top.source.facts.IsFolder()) LeaveOutHidden(top.source);
    return true;
}

// All that is spelled like the source goes along, whether or not a path leads there.
bool CopyPlan::AddRename(const Pending& top) {
    if (RefusesLength(top)) return false;
    if (!Takes(top.source, top.target)) return true;
    if (RefusesName(top)) return false;
    if (top.source.facts.IsFolder() && IsFilled(top.target)) {
        LeaveOut(top.source, "'" + top.target.shown + "' is there and is not empty");
        return true;
    }
    AddStep(top, true);
    const MemberNames& names = **top.source.archive->Names();
    for (const std::uint32_t other :
         names.OthersInside(top.source.inner, names.SpellingOf(top.source.inner, top.source.innerBytes))) {
        report_.Fail(top.source.shown, "'" + std::string(names.Name(other)) + "' is spelled otherwise, and stays");
    }
    return true;
}

void CopyPlan::LeaveOutHidden(const StorageItem& source) {
    if (!source.archive->Names()) return;
    const MemberNames& names = **source.archive->Names();
    for (const std::uint32_t hidden : names.Hidden(source.inner)) {
        LeaveOut(source, "its member '" + std::string(names.Name(hidden)) +
                             "' is left out: another one has that name, or it is no name for a file");
    }
}

void CopyPlan::LeaveOutBelowFile(const StorageItem& source) {
    if (!source.archive || !source.facts.IsFile()) return;
    const auto& names = source.archive->Names();
    const bool hasHidden = names && !(*names)->HiddenBelow(source.inner).empty();
    if (source.node->GetChildren().Empty() && !hasHidden) return;
    LeaveOut(source, "what lies below it is left out, since it is a file");
}

bool CopyPlan::IsFilled(const StorageItem& folder) const {
    std::vector<StorageEntry> entries;
    return folder.facts.IsFolder() && (tree_.List(folder, entries) || !entries.empty());
}

void CopyPlan::AddChildren(const Pending& folder, std::vector<Pending>& pending) {
    if (options_.move && IsFilled(folder.target)) {
        LeaveOut(folder.source, "'" + folder.target.shown + "' is there and is not empty");
        steps_.pop_back();
        return;
    }
    std::vector<StorageEntry> entries;
    if (const Failure failure = tree_.List(folder.source, entries)) LeaveOut(folder.source, failure.text);
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
        const std::string& name = entry->name;
        const std::size_t step = steps_.size() - 1;
        pending.push_back({tree_.Child(folder.source, name), tree_.Child(folder.target, name), step, name});
    }
}

void CopyPlan::AddStep(const Pending& pending, bool rename) {
    const StorageItem& source = pending.source;
    const StorageItem& target = pending.target;
    steps_.push_back({{source.node, source.facts},
                      {target.node, target.facts},
                      operands_.size() - 1,
                      pending.folder,
                      pending.name,
                      rename});
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
        if (step.target.facts.IsMissing() && !step.rename) ++count;
    }
    if (count <= kMaxEntries) return false;
    return !Refuse(target_.shown, "it would have " + std::to_string(count) + " members, and 65535 is the most");
}

}  // namespace ZEMA

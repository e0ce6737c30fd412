// What refuses a copy or a move as a whole.
#include <sys/stat.h>

#include <algorithm>

#include "host/archive/CopyPlan.h"
#include "host/system/Paths.h"
#include "storage/zip/ZipFormat.h"

namespace ZEMA {

namespace {

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

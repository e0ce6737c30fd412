#include "host/archive/ArchiveRewrite.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "host/archive/DescriptorFile.h"
#include "host/archive/ExtendedAttributes.h"
#include "host/archive/MarkedFile.h"
#include "host/archive/MemberHeaders.h"
#include "host/system/Paths.h"
#include "host/system/Utf8Text.h"

namespace ZEMA {

namespace {

bool IsAscii(std::string_view bytes) {
    return std::none_of(bytes.begin(), bytes.end(), [](char byte) { return (byte & 0x80) != 0; });
}

// Whether one part of a path is UTF-8, beyond ASCII, and another one is not UTF-8 at all.
bool MixesEncodings(std::string_view name) {
    bool hasUtf8 = false, hasOther = false;
    while (!name.empty()) {
        const std::string_view part = name.substr(0, name.find('/'));
        name.remove_prefix(std::min(part.size() + 1, name.size()));
        if (!IsUtf8(part)) hasOther = true;
        if (NeedsUtf8Flag(part)) hasUtf8 = true;
    }
    return hasUtf8 && hasOther;
}

Failure CheckName(const ArchiveEntry& entry, std::string_view name) {
    if (name.size() > 0xFFFF) return Refusal("its name would be too long for an archive");
    if (name == entry.name || IsAscii(name)) return {};
    const bool flagged = (entry.flags & kFlagUtf8) != 0;
    const bool commentIsOther = !flagged && !IsUtf8(entry.comment);
    if (MixesEncodings(name) || (IsUtf8(name) ? commentIsOther : flagged)) {
        return Refusal("its new name would mix UTF-8 with other bytes");
    }
    return {};
}

}  // namespace

Result<std::unique_ptr<ArchiveRewrite>> ArchiveRewrite::Begin(const std::string& path, const Options& options) {
    Result<LockedArchive> archive = LockedArchive::Open(path, options.force, options.tellWaiting);
    if (!archive) return archive.Why();
    if (archive->Status().st_nlink > 1 && !options.force) {
        return Refusal("it has several names (hard links), which would part; --force lets them");
    }
    MarkedFile::RemoveLeftovers(FolderOf(archive->Path()));
    std::unique_ptr<ArchiveRewrite> rewrite(new ArchiveRewrite(archive->Path(), options));
    rewrite->archive_ = std::move(*archive);
    rewrite->file_ = New<DescriptorFile>(rewrite->archive_->Descriptor());
    Result<ArchiveRecords::Pointer> records =
        options.mending ? ArchiveRecords::ReadForMending(rewrite->file_) : ArchiveRecords::Read(rewrite->file_);
    if (!records) return records.Why();
    rewrite->TakeOver(std::move(*records));
    return rewrite;
}

Result<std::unique_ptr<ArchiveRewrite>> ArchiveRewrite::BeginNew(const std::string& path, const Options& options) {
    const std::string target = RealPath(FolderOf(path)) + "/" + NameOf(path);
    MarkedFile::RemoveLeftovers(FolderOf(target));
    std::unique_ptr<ArchiveRewrite> rewrite(new ArchiveRewrite(target, options));
    rewrite->TakeOver(ArchiveRecords::None());
    return rewrite;
}

void ArchiveRewrite::TakeOver(ArchiveRecords::Pointer old) {
    plan_.old = std::move(old);
    plan_.mending = options_.mending;
    plan_.drop = options_.drop;
    removed_.resize(plan_.old->Count());
    plan_.members.resize(plan_.old->Count());
    for (std::uint32_t index = 0; index < plan_.members.size(); ++index) {
        plan_.members[index].source = plan_.old;
        plan_.members[index].index = index;
    }
}

void ArchiveRewrite::Remove(std::size_t index) {
    removed_[index] = true;
}

Failure ArchiveRewrite::Rename(std::size_t index, std::string name) {
    const ArchiveEntry entry = plan_.old->Entry(index);
    if (Failure failure = CheckName(entry, name)) return failure;
    plan_.members[index].change = std::make_unique<MemberChange>(MemberChange{std::move(name)});
    return {};
}

Failure ArchiveRewrite::Repack(std::size_t index, const ContentsReader& read) {
    const Result<PackedData> data = scratch_.Pack(read);
    if (!data) return data.Why();
    std::string name(plan_.old->Entry(index).name);
    plan_.members[index].change = std::make_unique<MemberChange>(MemberChange{std::move(name), *data});
    return {};
}

Failure ArchiveRewrite::AddFile(const NewMember& member, const ContentsReader& read) {
    const Result<PackedData> data = scratch_.Pack(read);
    if (!data) return data.Why();
    plan_.members.push_back(
        {nullptr, 0,
         std::make_unique<MemberChange>(MemberChange{member.name, *data, member.modifiedSeconds, member.mode})});
    return {};
}

void ArchiveRewrite::AddFolder(const NewMember& member) {
    plan_.members.push_back(
        {nullptr, 0,
         std::make_unique<MemberChange>(MemberChange{member.name, {}, member.modifiedSeconds, member.mode})});
}

Failure ArchiveRewrite::AddPacked(ArchiveRecords::Pointer source, std::size_t index, std::string name) {
    if (Failure failure = CheckName(source->Entry(index), name)) return failure;
    plan_.members.push_back({std::move(source), static_cast<std::uint32_t>(index),
                             std::make_unique<MemberChange>(MemberChange{std::move(name)})});
    return {};
}

ArchivePlan ArchiveRewrite::FinishPlan() {
    ArchivePlan plan = std::move(plan_);
    plan.scratch = scratch_.Descriptor();
    const std::size_t oldCount = removed_.size();
    std::size_t kept = 0;
    for (std::size_t number = 0; number < plan.members.size(); ++number) {
        if (number < oldCount && removed_[number]) continue;
        if (kept != number) plan.members[kept] = std::move(plan.members[number]);
        ++kept;
        if (number < oldCount) plan.keptCount = kept;
    }
    plan.members.resize(kept);
    return plan;
}

Failure ArchiveRewrite::Commit() {
    if (Failure failure = scratch_.Finish()) return failure;
    return Replace(FinishPlan());
}

// Whether the new file can be like the old one is found out before it is written; who changed the old one, as late as
// can be.
Failure ArchiveRewrite::Replace(const ArchivePlan& plan) {
    const Result<ArchiveLayout> layout = LayOutArchive(plan);
    if (!layout) return layout.Why();
    MarkedFile written;
    if (Failure failure = written.Create(path_)) return failure;
    const int to = written.Descriptor();
    if (archive_) {
        if (Failure failure = archive_->GiveAttributes(to, options_.force)) return failure;
    }
    if (Failure failure = WriteArchive(plan, *layout, to)) return failure;
    if (Failure failure = ProveArchive(plan, *layout, to)) return failure;
    if (!archive_) {
        if (fchmod(to, 0666 & ~CurrentUmask()) != 0) return SystemFailure(errno);
        return written.Commit(MarkedFile::Place::Free, true);
    }
    if (Failure failure = archive_->GiveOwner(to)) return failure;
    if (!archive_->IsUnchanged()) return Refusal("somebody else has changed it meanwhile");
    return written.Commit(MarkedFile::Place::Replace, true);
}

}  // namespace ZEMA

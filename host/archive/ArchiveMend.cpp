#include "host/archive/ArchiveMend.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "host/archive/ArchivePass.h"
#include "host/archive/ArchiveRecords.h"
#include "host/archive/ArchiveRewrite.h"
#include "host/archive/DescriptorFile.h"
#include "host/archive/ForeignMethods.h"
#include "host/archive/LocalRecord.h"
#include "host/archive/MountedArchive.h"
#include "host/system/FileDescriptor.h"
#include "storage/zip/ZipFormat.h"

namespace ZEMA {

namespace {

constexpr std::size_t kLongestComment = 65513;  // an end record further from the end of the file is not found

// Looks at all of an archive without changing it.
class Examination {
public:
    Examination(ArchiveRecords::Pointer records, bool drop) : records_(std::move(records)), drop_(drop) {}

    MendReport Make() {
        const Result<ArchiveRecords::Pointer> strict = ArchiveRecords::Read(RefPointer<File>(&records_->Archive()));
        if (!strict) report_.faults.push_back(strict.Why().text);
        ExamineTrailer();
        for (std::size_t index = 0; index < records_->Count(); ++index) {
            const ArchiveEntry entry = records_->Entry(index);
            ExamineName(entry);
            if (const Failure failure = ExamineMember(entry))
                report_.obstacles.push_back(OfMember(entry, failure).text);
        }
        if (report_.obstacles.empty()) ExamineLayout();
        return std::move(report_);
    }

private:
    void ExamineTrailer() {
        if (drop_) return;
        const std::string_view comment = records_->Trailer();  // the signature may begin in its length
        if (comment.size() > kLongestComment + 2) {
            report_.obstacles.emplace_back("its comment is longer than 65,513 bytes; --drop leaves it out");
        } else if (comment.find("PK\5\6") != std::string_view::npos) {
            report_.obstacles.emplace_back("its comment looks like an end record; --drop leaves it out");
        }
    }

    void ExamineName(const ArchiveEntry& entry) {
        const std::string quoted = "'" + std::string(entry.name) + "' in it";
        if (!names_.insert(entry.name).second) report_.obstacles.push_back(quoted + " is there more than once");
        if (entry.name.starts_with('/') || entry.name.find("//") != std::string_view::npos) {
            report_.obstacles.push_back(quoted + " has a name with an empty part, which no archive may hold");
        }
    }

    // What is wrong for good. What the repair puts right is noted.
    Failure ExamineMember(const ArchiveEntry& entry) {
        const Result<LocalRecord> local = ReadLocalRecord(window_, *records_, entry);
        if (!local) return local.Why();
        if (entry.IsEncrypted()) return {FailureKind::Unsupported, "it is encrypted"};
        if (entry.uncompressedSize >= kMaxOffset) return {FailureKind::Unsupported, "it is larger than 4 GiB"};
        if (IsForeignMethod(entry.method)) {
            Note(entry, {FailureKind::Unsupported, "it is packed by " + NameOfMethod(entry.method)});
            return {};
        }
        if (entry.method != kMethodStored && entry.method != kMethodDeflated) {
            return {FailureKind::Unsupported, "it is packed by " + NameOfMethod(entry.method)};
        }
        const PackedData data{local->dataOffset, local->dataSize, entry.uncompressedSize, entry.crc32, entry.method};
        if (!IsSound(window_, records_->Archive(), data)) {
            return {FailureKind::Damaged, "it is damaged: its contents do not have their size and checksum"};
        }
        if (const Failure failure = CheckReadable(entry, *local)) Note(entry, failure);
        return {};
    }

    void Note(const ArchiveEntry& entry, const Failure& fault) {
        report_.faults.push_back(OfMember(entry, fault).text);
    }

    // Members to be packed anew are taken at the size that they have.
    void ExamineLayout() {
        ArchivePlan plan;
        plan.old = records_;
        plan.mending = true;
        plan.drop = drop_;
        plan.keptCount = records_->Count();
        for (std::uint32_t index = 0; index < plan.keptCount; ++index)
            plan.members.push_back({records_, index, nullptr});
        const Result<ArchiveLayout> layout = LayOutArchive(plan);
        if (!layout) report_.obstacles.push_back(layout.Why().text);
    }

    const ArchiveRecords::Pointer records_;
    const bool drop_;
    FileWindow window_;
    std::unordered_set<std::string_view> names_;
    MendReport report_;
};

// `examined` is the file that the examination saw.
Failure Rewrite(const std::string& path, const MendOptions& options, int examined) {
    const ArchiveRewrite::Options how{options.force, options.tellWaiting, true, options.drop};
    const Result<std::unique_ptr<ArchiveRewrite>> rewrite = ArchiveRewrite::Begin(path, how);
    if (!rewrite) return rewrite.Why();
    if (!(*rewrite)->IsOf(examined)) return Refusal("somebody else has changed it meanwhile");
    const ArchiveRecords& records = *(*rewrite)->Records();
    FileWindow window;
    for (std::size_t index = 0; index < records.Count(); ++index) {
        const ArchiveEntry entry = records.Entry(index);
        if (!IsForeignMethod(entry.method)) continue;
        const Result<LocalRecord> local = ReadLocalRecord(window, records, entry);
        if (!local) return OfMember(entry, local.Why());
        const Failure failure = (*rewrite)->Repack(index, UnpackMember(records, entry, *local));
        if (failure) return OfMember(entry, failure);
    }
    return (*rewrite)->Commit();
}

bool IsSameName(std::string_view a, std::string_view b) {
    const auto isSame = [](char left, char right) {
        return std::tolower(static_cast<unsigned char>(left)) == std::tolower(static_cast<unsigned char>(right));
    };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), isSame);
}

Result<ArchiveEntry> FindOnce(const ArchiveRecords& records, std::string_view name) {
    std::optional<ArchiveEntry> found;
    for (std::size_t index = 0; index < records.Count(); ++index) {
        const ArchiveEntry entry = records.Entry(index);
        if (!IsSameName(entry.name, name)) continue;
        if (found) return Failure{FailureKind::Damaged, "'" + std::string(name) + "' in it is there more than once"};
        found = entry;
    }
    if (found) return *found;
    return Failure{FailureKind::Missing, "there is no '" + std::string(name) + "' in it"};
}

// What an entry claims of its size is not believed: memory grows with what there is.
Result<std::string> ReadContents(const ContentsReader& read, std::size_t limit) {
    constexpr std::size_t kPieceSize = 1 << 18;
    std::string contents;
    for (;;) {
        const std::size_t size = contents.size();
        contents.resize(size + kPieceSize);
        const Result<std::size_t> count = read(contents.data() + size, kPieceSize);
        if (!count) return count.Why();
        contents.resize(size + *count);
        if (*count == 0) return contents;
        if (contents.size() > limit) return Failure{FailureKind::Limit, "it is too large"};
    }
}

}  // namespace

Result<std::string> ReadMended(const std::string& path, std::string_view name, std::size_t limit) {
    const Result<FileDescriptor> file = OpenRegularFile(path);
    if (!file) return file.Why();
    const RefPointer<File> archive(New<DescriptorFile>(file->Get()));
    if (IsFineArchive(*archive)) return Failure{FailureKind::Refused, "it is fine"};
    const Result<ArchiveRecords::Pointer> records = ArchiveRecords::ReadForMending(archive);
    if (!records) return records.Why();
    const Result<ArchiveEntry> entry = FindOnce(**records, name);
    if (!entry) return entry.Why();
    if (entry->IsEncrypted()) return Failure{FailureKind::Unsupported, "it is encrypted"};
    const Result<LocalRecord> local = ReadLocalRecord(**records, *entry);
    if (!local) return local.Why();
    return ReadContents(UnpackMember(**records, *entry, *local), limit);
}

Result<MendReport> MendArchive(const std::string& path, const MendOptions& options) {
    const Result<FileDescriptor> file = OpenRegularFile(path);
    if (!file) return file.Why();
    const RefPointer<File> archive(New<DescriptorFile>(file->Get()));
    try {
        if (IsFineArchive(*archive)) return MendReport();
    } catch (const std::bad_alloc&) {
        return TooManyNames();
    }
    Result<ArchiveRecords::Pointer> records = ArchiveRecords::ReadForMending(archive);
    if (!records) return records.Why();
    MendReport report = Examination(std::move(*records), options.drop).Make();
    if (!report.obstacles.empty() || options.dryRun) return report;
    if (Failure failure = Rewrite(path, options, file->Get())) return failure;
    return report;
}

}  // namespace ZEMA

#include "host/archive/ArchivePass.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>

#include "host/archive/DescriptorFile.h"
#include "host/archive/LocalRecord.h"
#include "host/archive/MemberHeaders.h"
#include "host/system/FileDescriptor.h"
#include "storage/zip/ZipFormat.h"

namespace ZEMA {

namespace {

constexpr std::size_t kBufferSize = 1 << 20;
constexpr std::uint64_t kSmallCopy = 1 << 16;  // through the buffer; what is larger inside the system
constexpr std::uint64_t kWritebackStep = 1 << 24;
constexpr std::uint32_t kNone = 0xFFFFFFFF;

std::string TrailerOf(const ArchivePlan& plan) {
    return plan.drop ? std::string(2, '\0') : plan.old->Trailer();
}

// Whether a member's packed bytes are those in the archive that it comes from.
bool TakesData(const PlannedMember& member) {
    return member.source && !(member.change && member.change->data);
}

// Bytes of a file, in bytes from its start.
struct DataRange {
    File* file = nullptr;  // null: the scratch file
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
};

// The packed bytes, with the descriptor where that stays.
DataRange DataOf(const PlannedMember& member, const LocalRecord* local) {
    if (member.change && member.change->data) return {nullptr, member.change->data->offset, member.change->data->size};
    if (!member.source || local == nullptr) return {};
    const bool encrypted = member.source->Entry(member.index).IsEncrypted();
    return {&member.source->Archive(), local->dataOffset, local->dataSize + (encrypted ? local->descriptorSize : 0)};
}

// Has the disk begin with what is written, so that it works while we do: all must be on it in the end.
void StartWriteback(int file, std::uint64_t offset, std::uint64_t size) {
#ifdef __linux__
    sync_file_range(file, static_cast<off_t>(offset), static_cast<off_t>(size), SYNC_FILE_RANGE_WRITE);
#else
    static_cast<void>(file), static_cast<void>(offset), static_cast<void>(size);
#endif
}

// Fails unless the bytes, which belong to no member, are zero.
Failure CheckNobodysBytes(File& file, std::uint64_t begin, std::uint64_t end) {
    std::string bytes;
    for (; begin < end; begin += bytes.size()) {
        bytes.resize(static_cast<std::size_t>(std::min<std::uint64_t>(kBufferSize, end - begin)));
        if (!ReadAt(file, begin, bytes.size(), bytes.data())) return {FailureKind::System, "it cannot be read"};
        const std::size_t found = bytes.find_first_not_of('\0');
        if (found == std::string::npos) continue;
        return Refusal("there are bytes in it that belong to no member, at " + std::to_string(begin + found));
    }
    return {};
}

// Finds the places one after another and adds up, in 64 bits, what they take.
class Planner {
public:
    explicit Planner(const ArchivePlan& plan) : plan_(plan), old_(*plan.old) {
        layout_.offsets.resize(plan.members.size());
        layout_.order.reserve(plan.members.size());
    }

    Result<ArchiveLayout> Make() {
        if (plan_.members.size() > kMaxEntries) return Refusal("it would have more than 65,535 members");
        if (Failure failure = PlaceKept()) return failure;
        for (std::size_t number = plan_.keptCount; number < plan_.members.size(); ++number) {
            if (Failure failure = PlaceAdded(number)) return failure;
        }
        const std::uint64_t total = offset_ + directorySize_ + kEndCommentLength + TrailerOf(plan_).size();
        if (total > kMaxOffset) return Refusal("it would be larger than 4 GiB");
        if (total > 2 * old_.FileSize() + addedSize_) {
            return Refusal("its members share bytes, and written apart they would take more than twice its size");
        }
        if (Failure failure = CheckEnd()) return failure;
        return std::move(layout_);
    }

private:
    Failure PlaceKept();
    Failure CheckOld(const ArchiveEntry& entry, const Result<LocalRecord>& local, const PlannedMember* member) const;
    Failure PlaceAdded(std::size_t number);
    void Place(std::size_t number, const LocalRecord* local, bool isOld);
    Failure CheckEnd() const;

    const ArchivePlan& plan_;
    const ArchiveRecords& old_;
    FileWindow window_;
    ArchiveLayout layout_;
    std::uint64_t offset_ = 0;  // where the next member goes
    std::uint64_t directorySize_ = 0;
    std::uint64_t addedSize_ = kEndRecordSize;  // of what the old archive does not have
};

// All members of the old archive are looked at, since what lies between two of them must be nobody's. Behind a damaged
// one that goes, everything up to the next one is taken for its own.
Failure Planner::PlaceKept() {
    if (old_.FileSize() == 0) return {};  // a new archive has no old one
    std::vector<std::uint32_t> numbers(old_.Count(), kNone);
    for (std::uint32_t number = 0; number < plan_.keptCount; ++number) numbers[plan_.members[number].index] = number;
    const std::vector<std::uint32_t> order = old_.FileOrder();
    std::uint64_t covered = old_.DirectoryOffset();
    if (!order.empty()) covered = std::min(covered, old_.Entry(order[0]).localHeaderOffset);
    if (!plan_.drop) offset_ = layout_.frontSize = covered;

    bool lastIsLost = false;
    for (const std::uint32_t index : order) {
        const ArchiveEntry entry = old_.Entry(index);
        const Result<LocalRecord> local = ReadLocalRecord(window_, old_, entry);
        const PlannedMember* const member = numbers[index] == kNone ? nullptr : &plan_.members[numbers[index]];
        if (Failure failure = CheckOld(entry, local, member)) return OfMember(entry, failure);
        const bool stays = member != nullptr && TakesData(*member);
        const std::uint64_t start = std::min(entry.localHeaderOffset, old_.DirectoryOffset());
        if (!plan_.drop && !lastIsLost) {
            if (Failure failure = CheckNobodysBytes(old_.Archive(), covered, start)) return failure;
        }
        lastIsLost = !stays && (!local || local->LacksDescriptor() || CheckKept(entry, *local));
        covered = std::max({covered, start, local ? local->End() : 0});
        if (member != nullptr) Place(numbers[index], &*local, true);
    }
    if (plan_.drop || lastIsLost) return {};
    return CheckNobodysBytes(old_.Archive(), covered, old_.DirectoryOffset());
}

// A member that is packed anew still keeps what its local header alone knows.
Failure Planner::CheckOld(const ArchiveEntry& entry, const Result<LocalRecord>& local,
                          const PlannedMember* member) const {
    if (member == nullptr) return {};
    if (!local) return local.Why();
    return plan_.mending || !TakesData(*member) ? Failure() : CheckKept(entry, *local);
}

Failure Planner::PlaceAdded(std::size_t number) {
    const PlannedMember& member = plan_.members[number];
    if (!member.source) {
        Place(number, nullptr, false);
        return {};
    }
    const ArchiveEntry entry = member.source->Entry(member.index);
    const Result<LocalRecord> local = ReadLocalRecord(window_, *member.source, entry);
    if (!local) return OfMember(entry, local.Why());
    if (Failure failure = CheckKept(entry, *local)) return OfMember(entry, failure);
    Place(number, &*local, false);
    return {};
}

void Planner::Place(std::size_t number, const LocalRecord* local, bool isOld) {
    const PlannedMember& member = plan_.members[number];
    const MemberHeaders headers = HeadersOf(plan_, member, local);
    const std::uint64_t names = 2 * headers.entry.name.size();
    const std::uint64_t size =
        kLocalHeaderSize + headers.entry.name.size() + headers.localExtra.size() + DataOf(member, local).size;
    const std::uint64_t entrySize =
        kCentralHeaderSize + headers.entry.name.size() + headers.extra.size() + headers.entry.comment.size();
    layout_.order.push_back(static_cast<std::uint32_t>(number));
    layout_.offsets[number] = static_cast<std::uint32_t>(offset_);  // when it does not fit, the whole does not either
    offset_ += size;
    directorySize_ += entrySize;
    if (!isOld || (member.change && member.change->data)) {
        addedSize_ += size + entrySize;
    } else if (member.change) {
        addedSize_ += names;
    }
}

// What will stand in front of the end record is the last entry or, without members, what was in front of them.
Failure Planner::CheckEnd() const {
    std::string last;
    if (!plan_.members.empty()) {
        last = CentralHeaderOf(HeadersOf(plan_, plan_.members.back(), nullptr), 0);
    } else {
        last.resize(static_cast<std::size_t>(std::min<std::uint64_t>(layout_.frontSize, kCentralHeaderSize)));
        const std::uint64_t start = layout_.frontSize - last.size();
        if (!last.empty() && !ReadAt(old_.Archive(), start, last.size(), last.data())) {
            return {FailureKind::System, "it cannot be read"};
        }
    }
    if (!EndsLikeZip64(last)) return {};
    return {FailureKind::Refused,
            "it would be taken for a ZIP64 archive, by what would stand in front of its end record"};
}

// Writes a file from front to back. Small pieces come together in a buffer.
class Writer {
public:
    explicit Writer(int to) : to_(to) { buffer_.reserve(kBufferSize); }

    std::uint64_t Position() const { return written_ + buffer_.size(); }

    Failure Append(std::string_view bytes) {
        if (Failure failure = MakeRoom(bytes.size())) return failure;
        buffer_ += bytes;
        return {};
    }

    Failure Append(DataRange data, FileWindow& window) {
        const auto* const native = dynamic_cast<const DescriptorFile*>(data.file);
        if (native != nullptr && data.size > kSmallCopy) {
            if (Failure failure = Flush()) return failure;
            CopyFrom(*native, data);
        }
        while (data.size > 0) {
            const std::uint64_t part = std::min(data.size, kSmallCopy);
            const char* const bytes = window.Find(*data.file, data.offset, part);
            if (bytes == nullptr) return {FailureKind::System, "it cannot be read"};
            if (Failure failure = Append(std::string_view(bytes, static_cast<std::size_t>(part)))) return failure;
            data.offset += part;
            data.size -= part;
        }
        return {};
    }

    Failure Flush() {
        if (!WriteAllAt(to_, written_, buffer_.size(), buffer_.data())) return SystemFailure(errno);
        Advance(buffer_.size());
        buffer_.clear();
        return {};
    }

private:
    Failure MakeRoom(std::uint64_t size) { return buffer_.size() + size > kBufferSize ? Flush() : Failure(); }

    // As far as the system does it by itself; the rest stays in `data`.
    void CopyFrom(const DescriptorFile& file, DataRange& data) {
        while (data.size > 0) {
            const std::uint64_t part = std::min(data.size, kWritebackStep);
            const std::uint64_t copied =
                CopyInSystem(file.Descriptor(), file.Start() + data.offset, to_, written_, part);
            if (copied == 0) return;
            Advance(copied);
            data.offset += copied;
            data.size -= copied;
        }
    }

    void Advance(std::uint64_t size) {
        written_ += size;
        if (written_ - started_ < kWritebackStep) return;
        StartWriteback(to_, started_, written_ - started_);
        started_ = written_;
    }

    int to_;
    std::uint64_t written_ = 0;
    std::uint64_t started_ = 0;  // up to where the disk is at work
    std::string buffer_;
};

Failure WriteMembers(const ArchivePlan& plan, const ArchiveLayout& layout, Writer& writer) {
    RefPointer<DescriptorFile> scratch;
    if (plan.scratch >= 0) scratch = New<DescriptorFile>(plan.scratch);
    FileWindow window;
    for (const std::uint32_t number : layout.order) {
        const PlannedMember& member = plan.members[number];
        std::optional<LocalRecord> local;
        if (member.source) {
            Result<LocalRecord> read = ReadLocalRecord(window, *member.source, member.source->Entry(member.index));
            if (read) local = std::move(*read);
        }
        const LocalRecord* const record = local ? &*local : nullptr;
        if (writer.Position() != layout.offsets[number] || (TakesData(member) && record == nullptr)) {
            return Refusal("somebody else has changed it meanwhile");
        }
        DataRange data = DataOf(member, record);
        if (data.file == nullptr) data.file = scratch.Get();
        if (Failure failure = writer.Append(LocalHeaderOf(HeadersOf(plan, member, record)))) return failure;
        if (Failure failure = writer.Append(data, window)) return failure;
    }
    return {};
}

Failure WriteDirectory(const ArchivePlan& plan, const ArchiveLayout& layout, Writer& writer) {
    const std::uint64_t start = writer.Position();
    for (std::size_t number = 0; number < plan.members.size(); ++number) {
        const MemberHeaders headers = HeadersOf(plan, plan.members[number], nullptr);
        if (Failure failure = writer.Append(CentralHeaderOf(headers, layout.offsets[number]))) return failure;
    }
    std::string record(kEndCommentLength, '\0');
    const auto count = static_cast<std::uint16_t>(plan.members.size());
    StoreU32(record.data(), kEndRecordSignature);
    StoreU16(&record[kEndEntriesOnDisk], count);
    StoreU16(&record[kEndEntries], count);
    StoreU32(&record[kEndDirectorySize], static_cast<std::uint32_t>(writer.Position() - start));
    StoreU32(&record[kEndDirectoryOffset], static_cast<std::uint32_t>(start));
    return writer.Append(record + TrailerOf(plan));
}

}  // namespace

Result<ArchiveLayout> LayOutArchive(const ArchivePlan& plan) {
    return Planner(plan).Make();
}

Failure WriteArchive(const ArchivePlan& plan, const ArchiveLayout& layout, int to) {
    Writer writer(to);
    if (layout.frontSize > 0) {
        FileWindow window;
        if (Failure failure = writer.Append({&plan.old->Archive(), 0, layout.frontSize}, window)) return failure;
    }
    if (Failure failure = WriteMembers(plan, layout, writer)) return failure;
    if (Failure failure = WriteDirectory(plan, layout, writer)) return failure;
    return writer.Flush();
}

}  // namespace ZEMA

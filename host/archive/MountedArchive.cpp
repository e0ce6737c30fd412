#include "host/archive/MountedArchive.h"

#include <new>
#include <utility>

#include "host/archive/ArchiveRecords.h"
#include "host/archive/DescriptorFile.h"
#include "host/archive/ForeignMethods.h"
#include "host/archive/LocalRecord.h"
#include "host/system/Paths.h"
#include "storage/zip/ZipFormat.h"
#include "storage/zip/ZipStorageFile.h"

namespace ZEMA {

Result<MountedArchive::Pointer> MountedArchive::Open(const std::string& path) {
    Result<FileDescriptor> descriptor = OpenRegularFile(path);
    if (!descriptor) return descriptor.Why();
    const std::shared_ptr<MountedArchive> archive(new MountedArchive);
    archive->descriptor_ = std::move(*descriptor);
    fstat(archive->descriptor_.Get(), &archive->status_);
    const RefPointer<DescriptorFile> file = New<DescriptorFile>(archive->descriptor_.Get());
    const Failure failure = archive->Mount(RefPointer<File>(file.Get()));
    // A file that could not be read is not damaged for that.
    if (file->Error() != 0) return SystemFailure(file->Error());
    if (failure) return failure;
    return Pointer(archive);
}

Result<MountedArchive::Pointer> MountedArchive::OpenMember(const Pointer& outer, ZipTreeNode& node) {
    const std::shared_ptr<MountedArchive> archive(new MountedArchive);
    archive->outer_ = outer;
    const Result<RefPointer<File>> file = OpenMemberFile(outer->Volume(), node);
    if (!file) return file.Why();
    if (const Failure failure = archive->Mount(*file)) return failure;
    return Pointer(archive);
}

Failure TooManyNames() {
    return {FailureKind::Limit, "its names make more files and folders than there is memory for"};
}

// A volume does not say why it does not open. Its records do; where they are sound, the names are all that is left.
Failure MountedArchive::Mount(RefPointer<File> file) {
    file_ = std::move(file);
    volume_ = New<ZipStorageVolume>(file_.Get(), kReadStyle);
    try {
        if (volume_->Open()) return {};
    } catch (const std::bad_alloc&) {
        // This archive is as far as the failure goes: the command has others to work on.
        return TooManyNames();
    }
    const Result<ArchiveRecords::Pointer> records = ArchiveRecords::Read(file_);
    if (!records) return records.Why();
    return {FailureKind::Damaged, "one of its members has a name with an empty part"};
}

const Result<std::unique_ptr<const MemberNames>>& MountedArchive::Names() const {
    if (!names_) names_.emplace(ReadNames());
    return *names_;
}

// A volume ends its directory at the first record that is none, without a word; names by number would then be others'.
Result<std::unique_ptr<const MemberNames>> MountedArchive::ReadNames() const {
    Result<ArchiveRecords::Pointer> records = ArchiveRecords::Read(file_);
    if (!records) return records.Why();
    std::size_t count = 0;
    for (auto member = volume_->MembersInDirectoryOrder().First(); member != nullptr;
         member = ZipStorageVolume::DirectoryOrder::Next(member)) {
        ++count;
    }
    if (count != (*records)->Count()) return Failure{FailureKind::Damaged, "its directory ends too early"};
    return std::make_unique<const MemberNames>(std::move(*records), *volume_);
}

bool MountedArchive::IsOf(const struct stat& status) const {
    return !IsMember() && IsSameFile(status, status_);
}

namespace {

// Why the storage tree does not open a member that is a file. It keeps that to itself, but the records tell.
Failure WhyClosed(ZipStorageVolume& volume, const ZipFileHeader& member) {
    const Result<ArchiveRecords::Pointer> records = ArchiveRecords::Read(RefPointer<File>(&volume.Archive()));
    if (!records) return records.Why();
    std::size_t number = 0;
    auto before = volume.MembersInDirectoryOrder().First();
    for (; before != &member; before = ZipStorageVolume::DirectoryOrder::Next(before)) ++number;
    const ArchiveEntry entry = (*records)->Entry(number);
    const Result<LocalRecord> local = ReadLocalRecord(**records, entry);
    if (!local) return local.Why();
    if (Failure failure = CheckReadable(entry, *local)) return failure;
    if (entry.method != kMethodStored && entry.method != kMethodDeflated) {
        return {FailureKind::Unsupported, "it is packed by " + NameOfMethod(entry.method)};
    }
    return {FailureKind::Damaged, "it is damaged: its contents do not unpack to their size"};
}

}  // namespace

Result<RefPointer<File>> OpenMemberFile(ZipStorageVolume& volume, ZipTreeNode& node) {
    RefPointer<File> file(ZipStorageFile::Open(volume, node, nullptr, kReadStyle, nullptr));
    if (file) return file;
    const ZipFileHeader* const member = node.Header();
    if (member == nullptr || member->elementFlags.IsDirectory()) return Failure{FailureKind::WrongKind, "is a folder"};
    return WhyClosed(volume, *member);
}

}  // namespace ZEMA

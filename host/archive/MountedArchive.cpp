#include "host/archive/MountedArchive.h"

#include <cerrno>

#include "host/archive/OverlayFile.h"
#include "storage/zip/ZipFormat.h"
#include "storage/zip/ZipRecords.h"
#include "storage/zip/ZipStorageFile.h"

namespace ZEMA {

MountedArchive::Pointer MountedArchive::Open(const std::string& path, std::string& problem) {
    const std::shared_ptr<MountedArchive> archive(new MountedArchive);
    Result<FileDescriptor> opened = OpenRegularFile(path);
    if (!opened) {
        problem = opened.Why().text;
        return nullptr;
    }
    archive->file_ = std::move(*opened);
    fstat(archive->file_.Get(), &archive->status_);
    const RefPointer<OverlayFile> file = New<OverlayFile>(archive->file_.Get(), -1);
    if (archive->Mount(*file, problem)) return archive;
    // What cannot be read may well be an archive, and must not be replaced as if it were none.
    if (file->Error() != 0) problem = SystemFailure(file->Error()).text;
    return nullptr;
}

MountedArchive::Pointer MountedArchive::OpenMember(const Pointer& outer, ZipTreeNode& node, std::string& problem) {
    const std::shared_ptr<MountedArchive> archive(new MountedArchive);
    archive->outer_ = outer;
    const RefPointer<File> file = OpenMemberFile(outer->Volume(), node, problem);
    if (!file || !archive->Mount(*file, problem)) return nullptr;
    return archive;
}

bool MountedArchive::Mount(File& file, std::string& problem) {
    ZipEndRecord endRecord;
    problem.clear();
    if (GetSize(file) == 0 || !ReadEndRecord(file, endRecord)) return false;
    volume_ = New<ZipStorageVolume>(&file, kReadStyle);
    if (volume_->Open()) return true;
    problem = "the archive is damaged";
    return false;
}

bool MountedArchive::IsOf(const struct stat& status) const {
    return !IsMember() && status.st_dev == status_.st_dev && status.st_ino == status_.st_ino;
}

RefPointer<File> OpenMemberFile(ZipStorageVolume& volume, ZipTreeNode& node, std::string& problem) {
    RefPointer<File> file(ZipStorageFile::Open(volume, node, nullptr, kReadStyle, nullptr));
    if (file) return file;
    const ZipFileHeader* const member = node.Header();
    if (member == nullptr || member->elementFlags.IsDirectory()) {
        problem = "is a folder";
    } else if ((member->flags & kFlagEncrypted) != 0) {
        problem = "it is encrypted";
    } else if (member->method != kMethodStored && member->method != kMethodDeflated) {
        problem = "it is packed by a method that is not supported";
    } else {
        problem = "its records disagree, or it is damaged";
    }
    return nullptr;
}

}  // namespace ZEMA

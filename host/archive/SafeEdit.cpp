#include "host/archive/SafeEdit.h"

#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <vector>

#include "host/archive/ArchiveComparison.h"
#include "host/archive/DataDescriptors.h"
#include "host/archive/ExtendedAttributes.h"
#include "platform/Foundation/Uninterrupted.h"
#include "storage/PathOperations.h"
#include "storage/StorageMutex.h"
#include "storage/zip/ZipFormat.h"

namespace ZEMA {

namespace {

// Members of one name, one of which is seen: more than anybody's tools make, and few enough to mount the archive anew
// for each.
constexpr int kMostOfOneName = 16;

struct FreeText {
    void operator()(char* text) const { std::free(text); }
};

bool IsSameState(const struct stat& a, const struct stat& b) {
#ifdef __APPLE__
    const timespec &modifiedA = a.st_mtimespec, &modifiedB = b.st_mtimespec;
    const timespec &changedA = a.st_ctimespec, &changedB = b.st_ctimespec;
#else
    const timespec &modifiedA = a.st_mtim, &modifiedB = b.st_mtim;
    const timespec &changedA = a.st_ctim, &changedB = b.st_ctim;
#endif
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
           modifiedA.tv_sec == modifiedB.tv_sec && modifiedA.tv_nsec == modifiedB.tv_nsec &&
           changedA.tv_sec == changedB.tv_sec && changedA.tv_nsec == changedB.tv_nsec;
}

void LiftProtection(ZipTreeNode& node) {
    ElementFlags flags = node.Flags();
    flags.Set(ElementFlags::kWritable | ElementFlags::kEntriesWritable, true);
    node.SetFlags(flags);
}

BasicArray<String> ParentOf(const BasicArray<String>& path) {
    BasicArray<String> parent = path;
    parent.PopBack();
    return parent;
}

}  // namespace

Result<std::unique_ptr<SafeEdit>> SafeEdit::Begin(const std::string& path) {
    const std::unique_ptr<char, FreeText> real(realpath(path.c_str(), nullptr));
    if (!real) return SystemFailure(errno);
    std::unique_ptr<SafeEdit> edit(new SafeEdit);
    edit->path_ = real.get();
    if (const Failure failure = edit->LockArchive(real.get())) return failure;
    RemoveLeftovers(edit->path_);
    if (const Failure failure = edit->copy_.Create(edit->path_)) return failure;
    edit->file_ = New<OverlayFile>(edit->archive_.Get(), edit->copy_.Descriptor());
    if (const Failure failure = edit->Mount()) return failure;
    return edit;
}

// The tree lets go of the files before they are closed.
SafeEdit::~SafeEdit() {
    root_.Reset();
    file_.Reset();
}

// The edit that had the lock before may have put another file in the place of the one that was opened.
Failure SafeEdit::LockArchive(const std::string& path) {
    while (true) {
        Result<FileDescriptor> archive = OpenRegularFile(path);
        if (!archive) return archive.Why();
        archive_ = std::move(*archive);
        Foundation::Uninterrupted([&] { return flock(archive_.Get(), LOCK_EX); });
        struct stat now;
        if (fstat(archive_.Get(), &before_) == 0 && stat(path.c_str(), &now) == 0 && now.st_ino == before_.st_ino &&
            now.st_dev == before_.st_dev) {
            return {};
        }
    }
}

Failure SafeEdit::Mount() {
    root_.Reset();
    const RefPointer<ZipStorageVolume> volume = New<ZipStorageVolume>(file_.Get(), kReadWriteStyle);
    if (!volume->Open()) return Reason("the archive is damaged");
    root_ = New<ZipStorageDirectory>(String(), nullptr, volume.Get(), &volume->RootNode());
    hidesMembers_ = CountNamedMembers(*volume) != volume->EndRecord().entryCount;
    return {};
}

Failure SafeEdit::Reason(const char* otherwise) const {
    return file_->Error() != 0 ? SystemFailure(file_->Error()) : Failure{FailureKind::Damaged, otherwise};
}

ZipTreeNode* SafeEdit::Find(const BasicArray<String>& path) const {
    ZipTreeNode* node = &root_->Node();
    for (const String& name : path) {
        node = node->FindChild(name);
        if (node == nullptr) return nullptr;
    }
    return node;
}

Failure SafeEdit::MendLastMember() {
    if (RewriteLastMember(Volume())) return {};
    return Reason("nothing can be added behind its last member, which ends in a data descriptor and is not readable");
}

Failure SafeEdit::AddFolder(const BasicArray<String>& path) {
    if (Failure failure = MendLastMember()) return failure;
    const StorageLock lock;
    const RefPointer<Directory> parent = OpenDirectory(*root_, ParentOf(path), true);
    const ZipTreeNode* const present = Find(path);
    if (present != nullptr && present->Flags().IsDirectory()) return {};
    if (parent && parent->CreateDirectory(path.Back())) return {};
    return Reason("the archive does not take it");
}

// A member that is there and cannot be opened is replaced as a whole.
RefPointer<File> SafeEdit::OpenForWriting(const BasicArray<String>& path) {
    const std::uint64_t empty = 0;
    if (ZipTreeNode* const present = Find(path)) {
        if (present->Flags().IsDirectory()) return nullptr;
        LiftProtection(*present);
        RefPointer<File> file = OpenFile(*root_, path, &kReadWriteStyle, false, &empty);
        if (file || RemoveOne(path) || MendLastMember()) return file;
    }
    return OpenFile(*root_, path, &kReadWriteStyle, true, &empty);
}

Failure SafeEdit::WriteFile(const BasicArray<String>& path, StorageReader& contents) {
    if (Failure failure = MendLastMember()) return failure;
    RefPointer<File> file = OpenForWriting(path);
    if (!file) return Reason("the archive does not take it");
    std::vector<char> buffer(kReadBufferSize);
    std::uint64_t size = 0;
    Crc32 crc;
    while (true) {
        const Result<std::size_t> count = contents.Read(buffer.data(), buffer.size());
        if (!count) return count.Why();
        if (*count == 0) break;
        crc.Update(buffer.data(), *count);
        size += *count;
        if (Write(*file, *count, buffer.data())) continue;
        return {FailureKind::Refused,
                size > kMaxOffset ? "it is too large for an archive" : "there is not enough memory"};
    }
    ZipFileHeader& member = *Find(path)->Header();
    if (member.dirty) CountDescriptorSignature(Volume(), member);
    file.Reset();  // which packs the contents and cannot tell whether that went well
    if (member.uncompressedSize == size && member.crc32 == crc.Value()) return {};
    return Reason("the archive would grow past 4 GiB, or its records do not allow changes");
}

Failure SafeEdit::Remove(const BasicArray<String>& path) {
    String spelling;
    bool isFolder = false;
    for (int removed = 0; removed < kMostOfOneName; ++removed) {
        const ZipTreeNode* const node = Find(path);
        if (node == nullptr) return {};
        const bool same = node->Name() == spelling && node->Flags().IsDirectory() == isFolder;
        if (removed > 0 && !same) return {};  // something else that the name stands for now
        spelling = node->Name();
        isFolder = node->Flags().IsDirectory();
        if (Failure failure = RemoveOne(path)) return failure;
        // Of several members of one name the tree has the first; the next one shows when the archive is mounted again.
        if (!hidesMembers_) return {};
        if (Failure failure = Mount()) return failure;
    }
    return {FailureKind::Refused, "too many members have this name"};
}

Failure SafeEdit::RemoveOne(const BasicArray<String>& path) {
    const StorageLock lock;
    const RefPointer<Directory> parent = OpenDirectory(*root_, ParentOf(path), false);
    if (const ZipTreeNode* const present = Find(path)) {
        for (ZipFileHeader* const member : MembersBelow(*present)) CountDescriptorSignature(Volume(), *member);
    }
    if (parent && parent->Remove(path.Back(), true)) return {};
    return Reason("the archive's records do not allow changes");
}

bool SafeEdit::IsUnchanged() const {
    struct stat now;
    return stat(path_.c_str(), &now) == 0 && IsSameState(now, before_);
}

Failure SafeEdit::Commit() {
    const bool complete = file_->Complete();
    const RefPointer<OverlayFile> written = New<OverlayFile>(copy_.Descriptor(), -1);
    const RefPointer<ZipStorageVolume> volume = New<ZipStorageVolume>(written.Get(), kReadStyle);
    if (!complete || !volume->Open() || !HoldSameMembers(Volume(), *volume)) {
        return Reason("what was written is not what should be there");
    }
    // Changing the owner clears some permissions, which are therefore set behind it.
    if (fchown(copy_.Descriptor(), before_.st_uid, before_.st_gid) != 0) errno = 0;
    CopyExtendedAttributes(path_, copy_.Descriptor());
    if (!IsUnchanged()) return {FailureKind::Refused, "somebody else has changed it meanwhile"};
    return copy_.Commit(before_.st_mode & 07777, true);
}

}  // namespace ZEMA

#include "host/index/FileSystems.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <system_error>

#include "host/system/FileDescriptor.h"

namespace ZEMA {

namespace {

// Types of file systems that are served by other machines, or by programs that may ask some (Linux, magic.h and the
// sources of those that are not in it).
constexpr std::array<std::uint32_t, 12> kNetworkTypes = {
    0x00006969,  // NFS
    0x0000517B,  // SMB
    0xFF534D42,  // CIFS
    0xFE534D42,  // SMB2
    0x0000564C,  // NCP
    0x01021997,  // 9P
    0x5346414F,  // AFS
    0x73757245,  // Coda
    0x00C36400,  // Ceph
    0x0BD00BD0,  // Lustre
    0x65735546,  // FUSE
    0x786F4256,  // shared folders of VirtualBox
};

bool IsNetworkType(const struct statfs& status) {
    const auto type = static_cast<std::uint32_t>(status.f_type);
    return std::find(kNetworkTypes.begin(), kNetworkTypes.end(), type) != kNetworkTypes.end();
}

// Blanks and the like stand in the list of mounts as \040.
std::string WithoutEscapes(const std::string& field) {
    std::string text;
    for (std::size_t i = 0; i < field.size(); ++i) {
        const bool isEscape = field[i] == '\\' && i + 3 < field.size() && field[i + 1] >= '0' && field[i + 1] <= '3';
        if (!isEscape) {
            text += field[i];
            continue;
        }
        text += static_cast<char>((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 + (field[i + 3] - '0'));
        i += 3;
    }
    return text;
}

std::string NumberOf(const struct statfs& status) {
    std::array<std::uint32_t, 2> number;
    static_assert(sizeof(number) == sizeof(status.f_fsid));
    std::memcpy(number.data(), &status.f_fsid, sizeof(number));
    if (number[0] == 0 && number[1] == 0) return {};
    std::array<char, 64> text;
    std::snprintf(text.data(), text.size(), "%x:%08x%08x", static_cast<unsigned>(status.f_type), number[0], number[1]);
    return text.data();
}

}  // namespace

FolderPlace FileSystems::PlaceOf(const std::string& folder) {
    struct statx status;
    if (statx(AT_FDCWD, folder.c_str(), AT_NO_AUTOMOUNT, STATX_MNT_ID, &status) != 0) return {};
    if ((status.stx_mask & STATX_MNT_ID) == 0) return {};
    const dev_t device = makedev(status.stx_dev_major, status.stx_dev_minor);
    const Mount* const mount = FindMount(folder, status.stx_mnt_id, device);
    if (mount == nullptr) return {};
    const std::size_t start = mount->point == "/" ? 0 : mount->point.size();
    const std::string rest = folder == "/" ? "" : folder.substr(std::min(start, folder.size()));
    return {mount->fileSystem, (mount->root == "/" ? "" : mount->root) + rest, mount->isOnNetwork};
}

const FileSystems::Mount* FileSystems::FindMount(const std::string& folder, std::uint64_t number, dev_t device) {
    if (mounts_.find(number) == mounts_.end()) ReadMounts();
    const auto found = mounts_.find(number);
    if (found == mounts_.end() || !folder.starts_with(found->second.point)) return nullptr;
    Mount& mount = found->second;
    if (mount.fileSystem.empty()) {
        struct statfs status;
        if (statfs(folder.c_str(), &status) != 0) return nullptr;
        mount.isOnNetwork = IsNetworkType(status);
        mount.fileSystem = UuidOf(device);
        if (mount.fileSystem.empty()) mount.fileSystem = NumberOf(status);
    }
    return &mount;
}

// A line is: number, number of the mount around it, device, root, mount point, ... (proc(5), mountinfo).
void FileSystems::ReadMounts() {
    mounts_.clear();
    const Result<std::string> list = ReadStream("/proc/self/mountinfo");
    if (!list) return;
    std::istringstream lines(*list);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream fields(line);
        std::uint64_t number = 0;
        std::string around, device, root, point;
        if (fields >> number >> around >> device >> root >> point)
            mounts_[number] = {WithoutEscapes(root), WithoutEscapes(point), {}, false};
    }
}

std::string FileSystems::UuidOf(dev_t device) {
    if (!uuidsAreRead_) {
        uuidsAreRead_ = true;
        std::error_code error;
        for (std::filesystem::directory_iterator entry("/dev/disk/by-uuid", error), end; !error && entry != end;
             entry.increment(error)) {
            struct stat status;
            if (stat(entry->path().c_str(), &status) == 0) uuids_[status.st_rdev] = entry->path().filename().string();
        }
    }
    const auto found = uuids_.find(device);
    return found == uuids_.end() ? std::string() : found->second;
}

bool IsOnNetwork(const std::string& path) {
    struct statfs status;
    return statfs(path.c_str(), &status) == 0 && IsNetworkType(status);
}

}  // namespace ZEMA

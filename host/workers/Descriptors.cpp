#include "host/workers/Descriptors.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "host/system/Sanitizers.h"
#include "platform/Foundation/Uninterrupted.h"

namespace ZEMA {

namespace {

using Foundation::Uninterrupted;

#ifdef MSG_NOSIGNAL
constexpr int kSendFlags = MSG_NOSIGNAL;
#else
constexpr int kSendFlags = 0;  // SIGPIPE is ignored by the program anyway
#endif

// Room for one descriptor beside the bytes of a message.
struct alignas(cmsghdr) ControlRoom {
    char bytes[CMSG_SPACE(sizeof(int))] = {};
};

void CloseFrom(int first) {
#ifdef SYS_close_range
    if (syscall(SYS_close_range, first, ~0u, 0) == 0) return;
#endif
    const long end = std::min(sysconf(_SC_OPEN_MAX), 65536l);
    for (int descriptor = first; descriptor < end; ++descriptor) close(descriptor);
}

}  // namespace

void KeepOnly(int descriptor) {
    const int null = open("/dev/null", O_RDWR);
    const int last = kUnderSanitizers ? STDOUT_FILENO : STDERR_FILENO;
    for (int standard = STDIN_FILENO; null >= 0 && standard <= last; ++standard) dup2(null, standard);
    // Those below and above the one that stays.
    for (int below = STDERR_FILENO + 1; below < descriptor; ++below) close(below);
    CloseFrom(descriptor + 1);
}

SocketPair MakeSocketPair(bool messages) {
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, messages ? SOCK_SEQPACKET : SOCK_STREAM, 0, ends) != 0)
        return {FileDescriptor(), FileDescriptor()};
    for (const int end : ends) fcntl(end, F_SETFD, FD_CLOEXEC);
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

ssize_t SendWithDescriptor(int socket, const void* bytes, std::size_t size, int descriptor, bool wait) {
    iovec part = {const_cast<void*>(bytes), size};
    ControlRoom room;
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    if (descriptor >= 0) {
        message.msg_control = room.bytes;
        message.msg_controllen = sizeof room.bytes;
        cmsghdr* const head = CMSG_FIRSTHDR(&message);
        head->cmsg_level = SOL_SOCKET;
        head->cmsg_type = SCM_RIGHTS;
        head->cmsg_len = CMSG_LEN(sizeof descriptor);
        std::memcpy(CMSG_DATA(head), &descriptor, sizeof descriptor);
    }
    return Uninterrupted([&] { return sendmsg(socket, &message, kSendFlags | (wait ? 0 : MSG_DONTWAIT)); });
}

ssize_t ReceiveWithDescriptor(int socket, void* bytes, std::size_t size, FileDescriptor& descriptor, bool wait) {
    iovec part = {bytes, size};
    ControlRoom room;
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = room.bytes;
    message.msg_controllen = sizeof room.bytes;
    const ssize_t count = Uninterrupted([&] { return recvmsg(socket, &message, wait ? 0 : MSG_DONTWAIT); });
    if (count < 0) return count;
    const cmsghdr* const head = CMSG_FIRSTHDR(&message);
    if (head != nullptr && head->cmsg_level == SOL_SOCKET && head->cmsg_type == SCM_RIGHTS) {
        int received = -1;
        std::memcpy(&received, CMSG_DATA(head), sizeof received);
        descriptor = FileDescriptor(received);
    }
    return count;
}

}  // namespace ZEMA

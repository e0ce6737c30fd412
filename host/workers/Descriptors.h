// Descriptors of one process that another one has, or must not have.
#pragma once

#include <sys/types.h>

#include <cstddef>

#include "host/system/FileDescriptor.h"

namespace ZEMA {

// Closes everything but `descriptor`, and puts /dev/null under the three standard ones. Under the sanitizers standard
// error stays, for their reports.
void KeepOnly(int descriptor);

// Both ends of a connection between processes, closed when another program starts.
struct SocketPair {
    FileDescriptor ours;
    FileDescriptor theirs;
};
// A stream or, with `messages`, a sequence of messages; without a descriptor where the system has none left.
SocketPair MakeSocketPair(bool messages);

// One call each, again after an interruption: sends bytes, and a descriptor with them unless that is -1; receives them.
// What the calls of the system answer; with `wait` false EAGAIN where they would wait.
ssize_t SendWithDescriptor(int socket, const void* bytes, std::size_t size, int descriptor, bool wait = true);
ssize_t ReceiveWithDescriptor(int socket, void* bytes, std::size_t size, FileDescriptor& descriptor, bool wait = true);

}  // namespace ZEMA

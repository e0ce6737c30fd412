// Calling the system again when a signal came in between.
#pragma once

#include <cerrno>

namespace Foundation {

// Makes the call until it ends in anything but an interruption. Never for close(), which must not be repeated.
template <class Call>
auto Uninterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) result = call();
    return result;
}

}  // namespace Foundation

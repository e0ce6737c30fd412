#include "host/system/SignalCleanup.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>

namespace ZEMA {

namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

// Paths that stay where they are, since the handler may read them at any time. Only calls that a handler may make
// (POSIX, signal-safety) are made there.
std::array<std::atomic<char*>, 64> paths;
static_assert(std::atomic<char*>::is_always_lock_free);

void RemoveFiles(int signal) {
    for (const std::atomic<char*>& path : paths) {
        if (const char* const present = path.load()) unlink(present);
    }
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void HandleSignals() {
    for (const int signal : kSignals) {
        struct sigaction action = {};
        if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) continue;
        action.sa_handler = RemoveFiles;
        sigaction(signal, &action, nullptr);
    }
}

}  // namespace

SignalCleanup::SignalCleanup(const std::string& path) {
    HandleSignals();
    char* const copy = strdup(path.c_str());
    for (std::size_t slot = 0; copy != nullptr && slot < paths.size(); ++slot) {
        char* none = nullptr;
        if (!paths[slot].compare_exchange_strong(none, copy)) continue;
        slot_ = static_cast<int>(slot);
        return;
    }
    std::free(copy);
}

SignalCleanup::~SignalCleanup() {
    if (slot_ >= 0) std::free(paths[static_cast<std::size_t>(slot_)].exchange(nullptr));
}

}  // namespace ZEMA

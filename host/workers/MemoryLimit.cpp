#include "host/workers/MemoryLimit.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <string>

#include "host/system/Sanitizers.h"

namespace ZEMA {

namespace {

// Of this process, in bytes; without a limit there is nothing to compare with.
std::uint64_t limit = 0;
std::uint64_t addressSpaceAtStart = 0;
std::uint64_t residentAtStart = 0;

// A line of what the kernel tells of this process, in bytes; 0 where it does not.
std::uint64_t Status(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        std::uint64_t kilobytes = 0;
        if (word == name && status >> kilobytes) return kilobytes * 1024;
    }
    return 0;
}

// The most that was ever in use. Cheap enough to be asked after each document.
std::uint64_t PeakResident() {
    rusage usage = {};
    if (getrusage(RUSAGE_SELF, &usage) != 0) return 0;
#ifdef __APPLE__
    return static_cast<std::uint64_t>(usage.ru_maxrss);
#else
    return static_cast<std::uint64_t>(usage.ru_maxrss) * 1024;
#endif
}

}  // namespace

void LimitMemory(std::uint64_t bytes) {
    if constexpr (kUnderSanitizers) return;
    addressSpaceAtStart = Status("VmSize:");
    residentAtStart = PeakResident();
    limit = std::min(bytes, std::numeric_limits<std::uint64_t>::max() / 2);
    rlimit most = {};
    if (addressSpaceAtStart == 0 || getrlimit(RLIMIT_AS, &most) != 0) return;
    most.rlim_cur = std::min<rlim_t>(most.rlim_max, addressSpaceAtStart + limit);
    most.rlim_max = most.rlim_cur;
    setrlimit(RLIMIT_AS, &most);
}

bool MemoryWasShort() {
    return limit != 0 && Status("VmPeak:") >= addressSpaceAtStart + limit / 2;
}

bool MemoryIsWornOut() {
    return limit != 0 && PeakResident() > residentAtStart + limit / 2;
}

}  // namespace ZEMA

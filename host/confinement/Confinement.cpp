#include "host/confinement/Confinement.h"

#ifdef __linux__

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>

#include "host/confinement/FilterPlaceholder.h"
#include "host/system/FileDescriptor.h"

namespace ZEMA {

namespace {

constexpr sock_filter kFilter[] = {
#include "host/confinement/filter.inc"
};

// The process may only signal itself, and the filter was made before there was one.
Failure FilterSystemCalls() {
    auto filter = std::to_array(kFilter);
    for (sock_filter& row : filter) {
        if (BPF_CLASS(row.code) == BPF_JMP && row.k == kOwnProcessPlaceholder)
            row.k = static_cast<std::uint32_t>(getpid());
    }
    const sock_fprog program = {static_cast<unsigned short>(filter.size()), filter.data()};
    if (syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, 0, &program) != 0) return SystemFailure(errno);
    return {};
}

// The kernel's interface of Landlock (Documentation/userspace-api/landlock.rst), which is younger than the headers of
// many systems.
constexpr long kCreateRuleset = 444;
constexpr long kRestrictSelf = 446;
constexpr unsigned kAskVersion = 1;

// What a ruleset takes away where no rule gives it back. A kernel takes a longer structure than it knows if the rest of
// it is zero.
struct LandlockRuleset {
    std::uint64_t files = 0;
    std::uint64_t network = 0;
    std::uint64_t scopes = 0;
};

// Everything that the version has names for, but reading files and folders, which are the bits 2 and 3.
LandlockRuleset RulesetOf(long version) {
    const unsigned bits = version >= 5 ? 16 : version >= 3 ? 15 : version == 2 ? 14 : 13;
    LandlockRuleset ruleset;
    ruleset.files = ((std::uint64_t{1} << bits) - 1) & ~std::uint64_t{0b1100};
    if (version >= 4) ruleset.network = 0b11;  // binding and connecting by TCP
    if (version >= 6) ruleset.scopes = 0b11;   // abstract sockets and signals
    return ruleset;
}

Failure RestrictFiles() {
    const long version = syscall(kCreateRuleset, nullptr, 0, kAskVersion);
    if (version < 1) return SystemFailure(errno);
    const LandlockRuleset rules = RulesetOf(version);
    const FileDescriptor ruleset(static_cast<int>(syscall(kCreateRuleset, &rules, sizeof rules, 0)));
    if (!ruleset.IsOpen() || syscall(kRestrictSelf, ruleset.Get(), 0) != 0) return SystemFailure(errno);
    return {};
}

}  // namespace

std::vector<std::string> Confine() {
    std::vector<std::string> missing;
    const auto note = [&missing](const std::string& wall, const Failure& failure) {
        if (failure) missing.push_back("cannot put up " + wall + ": " + failure.text);
    };
    // Both walls ask that no program started from here could win rights back.
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) note("confinement", SystemFailure(errno));
    note("Landlock", RestrictFiles());  // first, since the filter refuses its calls
    note("the filter of system calls", FilterSystemCalls());
    return missing;
}

}  // namespace ZEMA

#else

namespace ZEMA {

std::vector<std::string> Confine() {
    return {"there is no confinement on this system"};
}

}  // namespace ZEMA

#endif

// Prints the instructions of the system-call filter as rows of a C array. Runs when the program is built: putting the
// filter together takes as long as an import.
//
// A call that stands in no list answers ENOSYS, so that a newer C library falls back to an older call, and nothing is
// killed. Those that a program would not expect to be missing are refused with EPERM or EACCES.

#include <fcntl.h>
#include <linux/filter.h>
#include <seccomp.h>
#include <sys/ioctl.h>
#include <sys/mman.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <memory>
#include <sstream>
#include <string>

#include "host/confinement/FilterPlaceholder.h"

namespace {

// Calls by their names, with blanks between them.
constexpr char kAllowed[] =
    // what is open, and looking for more
    "read readv pread64 preadv write writev lseek close close_range dup dup2 dup3 poll ppoll recvmsg fadvise64 "
    "access faccessat faccessat2 stat lstat fstat newfstatat statx statfs fstatfs readlink readlinkat getcwd "
    "getdents getdents64 "
    // memory and time
    "brk mremap munmap madvise clock_getres clock_gettime clock_nanosleep gettimeofday nanosleep time times setitimer "
    // the process itself
    "exit exit_group futex getegid geteuid getgid getpid getppid getrandom getrlimit getrusage gettid getuid "
    "membarrier "
    "restart_syscall rseq rt_sigaction rt_sigprocmask rt_sigreturn sched_getaffinity sched_yield set_robust_list "
    "sigaltstack sysinfo uname";

constexpr char kRefused[] =
    // changing files
    "chmod chown creat fallocate fchmod fchmodat fchown fchownat fremovexattr fsetxattr ftruncate futimesat lchown "
    "link linkat lremovexattr lsetxattr mkdir mkdirat mknod mknodat mount removexattr rename renameat renameat2 rmdir "
    "setxattr symlink symlinkat truncate unlink unlinkat utime utimensat utimes "
    // the network and other processes
    "accept accept4 bind connect listen pidfd_open process_vm_readv process_vm_writev sendmmsg sendmsg sendto socket "
    "socketpair "
    // becoming another program
    "execve execveat fork vfork";

// Refused, or left to the sanitizers: their own memory and reports, and a search for leaks at the end, from a process
// that stops this one.
constexpr char kOfTools[] = "clone ptrace";
#ifdef ZEMA_SANITIZED
constexpr char kAlsoOfTools[] = "getpgrp mmap mprotect pipe pipe2 prctl prlimit64 tgkill wait4";
#endif

void Check(int result, const std::string& what) {
    if (result >= 0) return;
    std::fprintf(stderr, "%s: error %d\n", what.c_str(), -result);
    std::exit(1);
}

// Conditions on the arguments of a call.
scmp_arg_cmp Is(unsigned argument, std::uint64_t value) {
    return {argument, SCMP_CMP_EQ, value, 0};
}

scmp_arg_cmp With(unsigned argument, std::uint64_t bits) {
    return {argument, SCMP_CMP_MASKED_EQ, bits, bits};
}

scmp_arg_cmp Without(unsigned argument, std::uint64_t bits) {
    return {argument, SCMP_CMP_MASKED_EQ, bits, 0};
}

// What becomes of each call. Rules on one call add up.
class Filter {
public:
    Filter() : context_(seccomp_init(SCMP_ACT_ERRNO(ENOSYS))) {
        if (context_ == nullptr) Check(-ENOMEM, "seccomp_init");
        // A call by the numbers of another architecture is one that nobody knows.
        Check(seccomp_attr_set(context_, SCMP_FLTATR_ACT_BADARCH, SCMP_ACT_ERRNO(ENOSYS)), "foreign calls");
        Check(seccomp_attr_set(context_, SCMP_FLTATR_CTL_OPTIMIZE, 2), "binary tree");
    }
    Filter(const Filter&) = delete;
    Filter& operator=(const Filter&) = delete;
    ~Filter() { seccomp_release(context_); }

    void Allow(const std::string& call, std::initializer_list<scmp_arg_cmp> conditions = {}) {
        Add(SCMP_ACT_ALLOW, call, conditions);
    }
    void Refuse(const std::string& call, unsigned error, std::initializer_list<scmp_arg_cmp> conditions = {}) {
        Add(SCMP_ACT_ERRNO(error), call, conditions);
    }
    void AllowAll(const char* calls) {
        std::istringstream names(calls);
        for (std::string call; names >> call;) Allow(call);
    }
    void RefuseAll(const char* calls) {
        std::istringstream names(calls);
        for (std::string call; names >> call;) Refuse(call, EPERM);
    }

    scmp_filter_ctx Context() const { return context_; }

private:
    void Add(std::uint32_t action, const std::string& call, std::initializer_list<scmp_arg_cmp> conditions) {
        const int number = seccomp_syscall_resolve_name(call.c_str());
        if (number == __NR_SCMP_ERROR) return;  // younger than the library
        const auto count = static_cast<unsigned>(conditions.size());
        Check(seccomp_rule_add_array(context_, action, number, count, conditions.begin()), call);
    }

    scmp_filter_ctx context_;
};

void AddOpening(Filter& filter, const char* call, unsigned flags) {
    filter.Allow(call, {Without(flags, O_ACCMODE | O_CREAT | O_TRUNC)});
    for (const unsigned change : {O_WRONLY + 0u, O_RDWR + 0u, O_CREAT + 0u, O_TRUNC + 0u}) {
        filter.Refuse(call, EACCES, {With(flags, change)});
    }
}

void AddRules(Filter& filter) {
    filter.AllowAll(kAllowed);
    AddOpening(filter, "open", 1);
    AddOpening(filter, "openat", 2);
    for (const unsigned command : {F_DUPFD + 0u, F_DUPFD_CLOEXEC + 0u, F_GETFD + 0u, F_SETFD + 0u, F_GETFL + 0u}) {
        filter.Allow("fcntl", {Is(1, command)});
    }
    // Whether something is a terminal, and how wide.
    for (const unsigned request : {TCGETS + 0u, TIOCGWINSZ + 0u}) filter.Allow("ioctl", {Is(1, request)});
    for (const char* call : {"kill", "tkill"}) filter.Allow(call, {Is(0, ZEMA::kOwnProcessPlaceholder)});
    filter.RefuseAll(kRefused);
#ifdef ZEMA_SANITIZED
    filter.AllowAll(kOfTools);
    filter.AllowAll(kAlsoOfTools);
#else
    filter.RefuseAll(kOfTools);
    filter.Allow("tgkill", {Is(0, ZEMA::kOwnProcessPlaceholder)});
    for (const char* call : {"mmap", "mprotect"}) filter.Allow(call, {Without(2, PROT_EXEC)});
    filter.Allow("prlimit64", {Is(2, 0)});  // to ask, not to change
#endif
}

}  // namespace

int main() {
    Filter filter;
    AddRules(filter);
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> instructions(std::tmpfile(), std::fclose);
    if (!instructions) Check(-errno, "tmpfile");
    Check(seccomp_export_bpf(filter.Context(), fileno(instructions.get())), "seccomp_export_bpf");
    std::rewind(instructions.get());
    for (sock_filter row = {}; std::fread(&row, sizeof row, 1, instructions.get()) == 1;) {
        std::printf("{0x%02x, %u, %u, 0x%08x},\n", unsigned{row.code}, unsigned{row.jt}, unsigned{row.jf}, row.k);
    }
    return 0;
}

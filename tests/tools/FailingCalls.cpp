// A library to be loaded before all others, in which one call of the system fails with FAIL_ERROR: the FAIL_NUMBER-th
// of FAIL_CALL, or all of them where that is 0. With a FAIL_SIGNAL that one comes first.

#include <dlfcn.h>
#include <sys/types.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

namespace {

bool Fails(const char* call) {
    static int count = 0;
    const char* const wanted = std::getenv("FAIL_CALL");
    if (wanted == nullptr || std::strcmp(wanted, call) != 0) return false;
    const int number = std::atoi(std::getenv("FAIL_NUMBER"));
    if (++count != number && number != 0) return false;
    if (const char* const signal = std::getenv("FAIL_SIGNAL")) std::raise(std::atoi(signal));
    errno = std::atoi(std::getenv("FAIL_ERROR"));
    return true;
}

}  // namespace

#define MAY_FAIL(result, name, parameters, arguments)                                             \
    extern "C" __attribute__((visibility("default"))) result name parameters {                    \
        static const auto next = reinterpret_cast<result(*) parameters>(dlsym(RTLD_NEXT, #name)); \
        return Fails(#name) ? -1 : next arguments;                                                \
    }

MAY_FAIL(ssize_t, pread, (int file, void* bytes, size_t size, off_t offset), (file, bytes, size, offset))
MAY_FAIL(ssize_t, pwrite, (int file, const void* bytes, size_t size, off_t offset), (file, bytes, size, offset))
MAY_FAIL(int, fchmod, (int file, mode_t mode), (file, mode))
MAY_FAIL(int, flock, (int file, int operation), (file, operation))
MAY_FAIL(int, fsync, (int file), (file))
MAY_FAIL(int, rename, (const char* from, const char* to), (from, to))

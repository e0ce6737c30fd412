// Runs a command and tells what the whole process took: measure FILE COMMAND... appends one line to FILE, the processor
// time and the wall time in microseconds, and the peak memory in KiB. What the command prints is thrown away.
//
// A small program of its own, since a process begins with the peak memory of the one that it was started from.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iostream>

namespace {

long Microseconds(const timeval& time) {
    return time.tv_sec * 1000000L + time.tv_usec;
}

void Become(char** command) {
    const int nothing = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nothing >= 0) dup2(nothing, STDOUT_FILENO);
    execv(command[0], command);
    _exit(127);
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 3) {
        std::cerr << "usage: measure FILE COMMAND...\n";
        return 2;
    }
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) Become(arguments + 2);
    int status = 0;
    rusage usage{};
    if (child < 0 || wait4(child, &status, 0, &usage) != child) return 1;
    const auto wall = std::chrono::steady_clock::now() - start;
    std::ofstream(arguments[1], std::ios::app)
        << Microseconds(usage.ru_utime) + Microseconds(usage.ru_stime) << ' '
        << std::chrono::duration_cast<std::chrono::microseconds>(wall).count() << ' ' << usage.ru_maxrss << '\n';
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

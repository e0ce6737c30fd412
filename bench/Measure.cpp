// Runs a command and tells what the whole process took: measure FILE COMMAND... appends one line to FILE, the processor
// time and the wall time in microseconds, and the peak memory in KiB, which is that of its largest process. What the
// command prints is thrown away.
//
// A small program of its own, since a process begins with the peak memory of the one that it was started from.
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
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
    // Whatever the command leaves behind becomes a child of this process, so that its time counts too.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) Become(arguments + 2);
    if (child < 0) return 1;
    long processor = 0;
    long peak = 0;
    auto end = start;
    int result = 1;
    int status = 0;
    rusage usage{};
    for (pid_t ended = wait4(-1, &status, 0, &usage); ended > 0; ended = wait4(-1, &status, 0, &usage)) {
        processor += Microseconds(usage.ru_utime) + Microseconds(usage.ru_stime);
        peak = std::max(peak, usage.ru_maxrss);
        if (ended != child) continue;
        end = std::chrono::steady_clock::now();
        if (WIFEXITED(status)) result = WEXITSTATUS(status);
    }
    const auto wall = std::chrono::duration_cast<std::chrono::microseconds>(end - start).count();
    std::ofstream(arguments[1], std::ios::app) << processor << ' ' << wall << ' ' << peak << '\n';
    return result;
}

#include "tests/tools/Process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

namespace {

// Reads both pipes until their ends, so that neither fills up; false after a minute.
bool Collect(int out, int err, Result& result) {
    pollfd pipes[] = {{out, POLLIN, 0}, {err, POLLIN, 0}};
    std::string* const texts[] = {&result.out, &result.err};
    while (pipes[0].fd >= 0 || pipes[1].fd >= 0) {
        if (poll(pipes, 2, 60000) <= 0) return false;
        for (int i = 0; i < 2; ++i) {
            if (pipes[i].revents == 0) continue;
            char part[65536];
            const ssize_t count = read(pipes[i].fd, part, sizeof(part));
            if (count > 0) texts[i]->append(part, static_cast<std::size_t>(count));
            if (count > 0 && i == 0) ++result.pieces;
            if (count <= 0) pipes[i].fd = -1;
        }
    }
    return true;
}

Result Run(std::vector<std::string> command, const std::string& input) {
    const TemporaryFolder folder;
    const int in = open(folder.Write("input", input).c_str(), O_RDONLY | O_CLOEXEC);
    int out[2], err[2];
    // With O_DIRECT a pipe keeps what was written at once together, and apart from the rest.
    if (pipe2(out, O_CLOEXEC | O_DIRECT) != 0 || pipe2(err, O_CLOEXEC) != 0) return {};
    std::vector<char*> arguments;
    for (std::string& argument : command) arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        dup2(in, STDIN_FILENO);
        dup2(out[1], STDOUT_FILENO);
        dup2(err[1], STDERR_FILENO);
        execv(arguments[0], arguments.data());
        _exit(127);
    }
    close(in);
    close(out[1]);
    close(err[1]);
    Result result;
    if (!Collect(out[0], err[0], result)) {
        kill(child, SIGKILL);
        ADD_FAILURE() << "the program does not end";
    }
    close(out[0]);
    close(err[0]);
    int status = 0;
    waitpid(child, &status, 0);
    result.exit = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    return result;
}

}  // namespace

Result Wqf(const std::vector<std::string>& arguments, const std::string& input) {
    std::vector<std::string> command = {ZEMA_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return Run(command, input);
}

Result Shell(const std::string& line) {
    return Run({"/bin/sh", "-c", "WQF='" ZEMA_PROGRAM "'; " + line}, "");
}

}  // namespace ZEMA::testing

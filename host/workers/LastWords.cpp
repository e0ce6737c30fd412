#include "host/workers/LastWords.h"

#include <signal.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <memory>

#include "host/system/Sanitizers.h"

namespace ZEMA {

namespace {

constexpr std::array kCrashes = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};
constexpr std::size_t kStackSize = 65536;  // the document may have used up the other one

// What the handlers need; they must not take memory or locks.
struct State {
    LastWords::Words late;
    std::array<LastWords::Words, kCrashes.size()> crashed;
    itimerval time = {};
    int exitStatus = 0;
    std::array<char, kStackSize> stack = {};
};
std::unique_ptr<State> state;

void Say(int descriptor, const std::string& text) {
    for (std::size_t said = 0; said < text.size();) {
        const ssize_t count = write(descriptor, text.data() + said, text.size() - said);
        if (count <= 0) return;
        said += static_cast<std::size_t>(count);
    }
}

[[noreturn]] void End(const LastWords::Words& words) {
    Say(STDOUT_FILENO, words.output);
    Say(STDERR_FILENO, words.message);
    _exit(state->exitStatus);
}

void OnLate(int) {
    End(state->late);
}

void OnCrash(int signal) {
    for (std::size_t i = 0; i < kCrashes.size(); ++i) {
        if (kCrashes[i] == signal) End(state->crashed[i]);
    }
}

void OnContinue(int) {
    setitimer(ITIMER_REAL, &state->time, nullptr);
}

void Handle(int signal, void (*handler)(int), int flags = 0) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigaction(signal, &action, nullptr);
}

}  // namespace

LastWords::LastWords(std::chrono::milliseconds timeout, const WordsFor& wordsFor, int exitStatus) {
    state = std::make_unique<State>();
    state->exitStatus = exitStatus;
    if (!kUnderSanitizers) {
        const stack_t stack = {state->stack.data(), 0, state->stack.size()};
        sigaltstack(&stack, nullptr);
        for (std::size_t i = 0; i < kCrashes.size(); ++i) {
            state->crashed[i] = wordsFor(CrashText(kCrashes[i]));
            Handle(kCrashes[i], OnCrash, SA_ONSTACK);
        }
    }
    if (timeout.count() == 0) return;
    state->late = wordsFor(TooLateText(timeout));
    state->time.it_value.tv_sec = timeout.count() / 1000;
    state->time.it_value.tv_usec = static_cast<suseconds_t>(timeout.count() % 1000 * 1000);
    Handle(SIGALRM, OnLate);
    Handle(SIGCONT, OnContinue);
    setitimer(ITIMER_REAL, &state->time, nullptr);
}

LastWords::~LastWords() {
    const itimerval none = {};
    setitimer(ITIMER_REAL, &none, nullptr);
    for (const int signal : {SIGALRM, SIGCONT}) Handle(signal, SIG_DFL);
    if (kUnderSanitizers) return;
    for (const int signal : kCrashes) Handle(signal, SIG_DFL);
    stack_t stack = {};
    stack.ss_flags = SS_DISABLE;
    sigaltstack(&stack, nullptr);
}

std::string TooLateText(std::chrono::milliseconds timeout) {
    return "it takes longer than " + std::to_string((timeout.count() + 999) / 1000) + " s";
}

std::string CrashText(int signal) {
    return std::string("reading it crashed (") + strsignal(signal) + ")";
}

}  // namespace ZEMA

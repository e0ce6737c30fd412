#include "host/system/Output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "host/system/FileDescriptor.h"
#include "host/system/Utf8Text.h"

namespace ZEMA {

namespace {

constexpr std::size_t kManyDocuments = 20;
constexpr std::chrono::milliseconds kBetweenDraws(200);
constexpr std::string_view kEraseLine = "\r\x1B[K";  // ECMA-48: to the line's start, erase to its end

}  // namespace

bool Output::Write(std::string_view piece) {
    if (error_ == 0 && !WriteAll(STDOUT_FILENO, piece)) error_ = errno;
    return error_ == 0;
}

void ReserveStandardDescriptors() {
    // Opened for reading, so that writing to it is still noticed.
    int descriptor = open("/dev/null", O_RDONLY);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO) descriptor = open("/dev/null", O_RDONLY);
    if (descriptor >= 0) close(descriptor);
}

void PrintMessage(std::string_view subject, std::string_view text) {
    PrintMessage(std::string(subject).append(": ").append(text));
}

void PrintMessage(std::string_view text) {
    // Where standard error cannot be written, there is no one left to tell.
    (void)WriteAll(STDERR_FILENO, MessageLine(text));
}

std::string MessageLine(std::string_view text) {
    return "wqf: " + EscapeControls(ReplaceInvalidUtf8(text)) + "\n";
}

ProgressLine::ProgressLine(std::size_t total)
    : total_(total),
      wanted_(total >= kManyDocuments && isatty(STDERR_FILENO) != 0),
      nextDraw_(start_ + kBetweenDraws) {}

void ProgressLine::Show(std::size_t done, std::size_t failed) {
    const Clock::time_point now = Clock::now();
    if (!wanted_ || now < nextDraw_) return;
    nextDraw_ = now + kBetweenDraws;
    const double seconds = std::chrono::duration<double>(now - start_).count();
    const auto rate = static_cast<std::size_t>(static_cast<double>(done) / seconds);
    std::string line(kEraseLine);
    line += std::to_string(done) + " of " + std::to_string(total_) + " done, " + std::to_string(failed) + " failed, " +
            std::to_string(rate) + "/s";
    (void)WriteAll(STDERR_FILENO, line);
    visible_ = true;
}

void ProgressLine::Hide() {
    if (!visible_) return;
    (void)WriteAll(STDERR_FILENO, kEraseLine);
    visible_ = false;
}

}  // namespace ZEMA

// The program's standard output, and its messages and progress on standard error.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace ZEMA {

// Writes to standard output, piece by piece and unbuffered: each piece is one write(2) as far as the system takes it.
//
// SIGPIPE must be ignored. After a piece could not be written, nothing more is.
class Output {
public:
    // False when the piece, or one before it, could not be written.
    bool Write(std::string_view piece);

    bool Failed() const { return error_ != 0; }
    int Error() const { return error_; }  // an errno value; EPIPE when the reader has gone

private:
    int error_ = 0;
};

// Call it first. Where the program was started without standard input, output or error, their numbers are taken, so
// that no document is opened under one of them and written over by a message.
void ReserveStandardDescriptors();

// One line on standard error, "wqf: SUBJECT: TEXT" or "wqf: TEXT", written at once. Control characters are \u00XX in it
// and bytes that are not UTF-8 are U+FFFD, so that it stays one line.
void PrintMessage(std::string_view subject, std::string_view text);
void PrintMessage(std::string_view text);

// Such a line, for who has to have it ready.
std::string MessageLine(std::string_view text);

// A line on standard error that tells how far the work is. Only drawn on a terminal, for many documents, and a few
// times a second. Whatever else is written must be written while it is hidden: standard output may be the same
// terminal.
class ProgressLine {
public:
    explicit ProgressLine(std::size_t total);
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ~ProgressLine() { Hide(); }

    void Show(std::size_t done, std::size_t failed);
    void Hide();

private:
    using Clock = std::chrono::steady_clock;

    std::size_t total_;
    bool wanted_;
    bool visible_ = false;
    Clock::time_point start_ = Clock::now();
    Clock::time_point nextDraw_;
};

}  // namespace ZEMA

#include "host/workers/Worker.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <new>

#include "core/Limits.h"
#include "host/confinement/Confinement.h"
#include "host/system/FileDescriptor.h"
#include "host/workers/Descriptors.h"
#include "host/workers/Frames.h"
#include "host/workers/MemoryLimit.h"
#include "platform/Foundation/Uninterrupted.h"

namespace ZEMA {

namespace {

// Requests are paths.
constexpr std::size_t kLargestRequest = std::size_t{16} << 20;
constexpr std::chrono::milliseconds kBetweenSigns(200);

// The stream to the program.
class Line {
public:
    explicit Line(int socket) : socket_(socket), requests_(kLargestRequest) {}

    // Waits for the next request; leaves when there will be none.
    Frame NextRequest();

    void Answer(FrameKind kind, std::string_view content);
    void SayStillThere();

    // Puts the lent descriptor under its number, for the one request that it came with.
    void TakeLent(int number);
    void DropLent(int number);

private:
    int socket_;
    FrameReader requests_;
    FileDescriptor lent_;
    std::chrono::steady_clock::time_point lastSign_ = std::chrono::steady_clock::now();
};

Frame Line::NextRequest() {
    for (;;) {
        if (std::optional<Frame> request = requests_.Next()) return std::move(*request);
        char bytes[16384];
        FileDescriptor lent;
        const ssize_t count = ReceiveWithDescriptor(socket_, bytes, sizeof bytes, lent);
        if (count <= 0 || requests_.Broken()) _exit(0);
        if (lent.IsOpen()) lent_ = std::move(lent);
        requests_.Append({bytes, static_cast<std::size_t>(count)});
    }
}

void Line::Answer(FrameKind kind, std::string_view content) {
    std::string bytes;
    AppendFrame(kind, content, bytes);
    if (!WriteAll(socket_, bytes)) _exit(0);
}

void Line::SayStillThere() {
    const auto now = std::chrono::steady_clock::now();
    if (now - lastSign_ < kBetweenSigns) return;
    lastSign_ = now;
    Answer(FrameKind::StillThere, {});
}

void Line::TakeLent(int number) {
    if (number == socket_) socket_ = fcntl(socket_, F_DUPFD_CLOEXEC, number + 1);
    const int given = lent_.Release();
    if (given < 0 || given == number) return;
    dup2(given, number);
    close(given);
}

void Line::DropLent(int number) {
    if (number > STDERR_FILENO) {
        close(number);
    } else {
        dup2(number == STDIN_FILENO ? STDOUT_FILENO : STDIN_FILENO, number);
    }
}

// What a hostile document makes of this process must not fill the user's folder.
void LeaveNoCore() {
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
}

[[noreturn]] void Serve(Line& line, const Work& work) {
    for (;;) {
        const Frame request = line.NextRequest();
        LentDescriptor number = -1;
        if (request.content.size() < sizeof number) _exit(0);
        std::memcpy(&number, request.content.data(), sizeof number);
        if (number >= 0) line.TakeLent(number);
        const std::string answer =
            work(std::string_view(request.content).substr(sizeof number), [&line] { line.SayStillThere(); });
        if (number >= 0) line.DropLent(number);
        if (answer.size() > kLargestAnswer) _exit(kWorkerAnswerTooLarge);
        const bool last = MemoryIsWornOut();
        line.Answer(last ? FrameKind::Last : FrameKind::Content, answer);
        if (last) _exit(0);
    }
}

}  // namespace

void RunWorker(int socket, const Work& work, std::uint64_t memory) {
    KeepOnly(socket);
    LeaveNoCore();
    LimitMemory(memory);
    try {
        Line line(socket);
        for (const std::string& missing : Confine()) line.Answer(FrameKind::MissingWall, missing);
        Serve(line, work);
    } catch (...) {
        _exit(kWorkerOutOfMemory);
    }
}

}  // namespace ZEMA

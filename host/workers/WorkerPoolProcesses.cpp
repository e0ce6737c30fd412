// The processes of a worker pool: listening to them, and what their ends mean.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

#include "host/workers/Descriptors.h"
#include "host/workers/LastWords.h"
#include "host/workers/WorkerPool.h"

namespace ZEMA {

namespace {

constexpr std::size_t kMostWalls = 8;
constexpr double kLongestNap = 0.002;  // in seconds

volatile std::sig_atomic_t wasStopped = 0;

// A job that was stopped and goes on gets the whole time again, since none of it went into work.
void NoticeContinuing() {
    struct sigaction action = {};
    if (sigaction(SIGCONT, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) return;
    action.sa_handler = [](int) { wasStopped = 1; };
    sigaction(SIGCONT, &action, nullptr);
}

// Whether somebody or the kernel ended the process for a reason of their own.
bool IsOutside(int signal) {
    return signal == SIGKILL || signal == SIGTERM || signal == SIGINT || signal == SIGHUP || signal == SIGQUIT;
}

WorkerOutcome OutcomeOfEnd(int status) {
    if (WIFSIGNALED(status)) {
        const int signal = WTERMSIG(status);
        if (IsOutside(signal)) return {{}, {FailureKind::System, "the worker that read it was killed"}, true};
        return {{}, {FailureKind::Damaged, CrashText(signal)}, false};
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == kWorkerOutOfMemory)
        return {{}, {FailureKind::Limit, "out of memory"}, true};
    if (WIFEXITED(status) && WEXITSTATUS(status) == kWorkerAnswerTooLarge) {
        const std::string most = std::to_string(kLargestAnswer >> 20);
        return {{}, {FailureKind::Limit, "there is more in it than " + most + " MiB"}, false};
    }
    return {{}, {FailureKind::System, "the worker that read it ended"}, true};
}

}  // namespace

bool WorkerPool::StartWorker() {
    NoticeContinuing();
    SocketPair pair = MakeSocketPair(false);
    if (!pair.ours.IsOpen() || !spawner_.Start(nextWorker_, std::move(pair.theirs))) return false;
    workers_.emplace_back();
    workers_.back().number = nextWorker_++;
    workers_.back().socket = std::move(pair.ours);
    return true;
}

// The rest goes when the socket has room again.
void WorkerPool::Flush(Worker& worker) {
    while (!worker.outgoing.empty()) {
        const ssize_t count =
            SendWithDescriptor(worker.socket.Get(), worker.outgoing.data(), worker.outgoing.size(), -1, false);
        if (count <= 0) return;  // a worker that has gone is noticed by its silence
        worker.outgoing.erase(0, static_cast<std::size_t>(count));
    }
}

void WorkerPool::DecideWhomToHear() {
    const bool full = HeldBytes() >= options_.held;
    const bool firstWaits = !waiting_.empty() && waiting_.front().number == firstOpen_;
    for (Worker& worker : workers_) {
        const bool hasFirst = std::any_of(worker.tasks.begin(), worker.tasks.end(),
                                          [this](const OpenTask& task) { return task.number == firstOpen_; });
        const bool heard = !full || firstWaits || hasFirst;
        if (heard && !worker.heard) worker.since = Clock::now();  // it could not answer before
        worker.heard = heard;
    }
}

void WorkerPool::Wait() {
    if (const std::chrono::microseconds nap = Nap(); nap.count() > 0) usleep(static_cast<useconds_t>(nap.count()));
    Hear(MillisecondsToWait(Clock::now()));
    StopLateOnes();
}

void WorkerPool::Hear(int milliseconds) {
    DecideWhomToHear();
    polled_.clear();
    polled_.push_back({spawner_.Descriptor(), POLLIN, 0});
    for (Worker& worker : workers_) {
        Flush(worker);
        const auto events = static_cast<short>((worker.heard ? POLLIN : 0) | (worker.outgoing.empty() ? 0 : POLLOUT));
        // One of which nothing is wanted must not wake us either.
        polled_.push_back({events == 0 ? -1 : worker.socket.Get(), events, 0});
    }
    const int ready = poll(polled_.data(), polled_.size(), milliseconds);
    if (std::exchange(wasStopped, 0) != 0) RestartClocks();
    if (ready <= 0) return;
    std::size_t next = 1;
    for (auto worker = workers_.begin(); worker != workers_.end(); ++next) {
        const auto current = worker++;
        if (current->heard && polled_[next].revents != 0) Listen(current);
    }
    if (polled_[0].revents != 0) TakeNews();
}

// While every worker has enough to do, answers may gather: waking for each takes more of a processor than reading it.
// Half of what the one with the least has to do is no time that anybody would miss.
std::chrono::microseconds WorkerPool::Nap() const {
    std::size_t least = workers_.empty() || waiting_.empty() ? 0 : workers_.front().tasks.size();
    for (const Worker& worker : workers_) least = std::min(least, worker.tasks.size());
    const double seconds = std::min(static_cast<double>(least) * secondsPerTask_ / 2, kLongestNap);
    return std::chrono::microseconds(least < 2 ? 0 : static_cast<long>(seconds * 1e6));
}

int WorkerPool::MillisecondsToWait(Clock::time_point now) const {
    if (options_.timeout.count() == 0) return -1;
    std::chrono::milliseconds least(-1);
    for (const Worker& worker : workers_) {
        if (worker.tasks.empty() || !worker.heard) continue;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(worker.since + options_.timeout - now);
        const std::chrono::milliseconds wait = std::clamp<std::chrono::milliseconds>(left, {}, std::chrono::hours(1));
        if (least.count() < 0 || wait < least) least = wait;
    }
    return static_cast<int>(least.count());
}

void WorkerPool::Listen(WorkerPlace worker) {
    std::array<char, 65536> bytes;
    FileDescriptor none;
    const ssize_t count = ReceiveWithDescriptor(worker->socket.Get(), bytes.data(), bytes.size(), none, false);
    if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return;
    if (count <= 0) return AwaitEnd(worker);
    const Clock::time_point now = Clock::now();
    // Also when an answer is long and comes in pieces.
    const double seconds = std::chrono::duration<double>(now - std::exchange(worker->since, now)).count();
    const std::size_t before = worker->tasks.size();
    worker->incoming.Append({bytes.data(), static_cast<std::size_t>(count)});
    while (std::optional<Frame> frame = worker->incoming.Next()) {
        const bool last = frame->kind == FrameKind::Last;
        if (!Take(*worker, std::move(*frame))) break;
        if (last) return Retire(worker);
    }
    if (const std::size_t answered = before - worker->tasks.size(); answered > 0) {
        secondsPerTask_ += (seconds / static_cast<double>(answered) - secondsPerTask_) / 16;
    }
    if (worker->incoming.Broken())
        Lose(worker, {{}, {FailureKind::Damaged, "the worker that read it went wrong"}, false});
}

// False when the worker has nothing to answer.
bool WorkerPool::Take(Worker& worker, Frame frame) {
    if (frame.kind == FrameKind::StillThere) return true;
    if (frame.kind == FrameKind::MissingWall) {
        if (missingWalls_.size() < kMostWalls) missingWalls_.insert(std::move(frame.content));
        return true;
    }
    if (worker.tasks.empty()) {
        worker.incoming.Break();
        return false;
    }
    const OpenTask& task = worker.tasks.front();
    stuck_.Clear(task.task.path);
    Finish(task.number, {std::move(frame.content), {}, false});
    worker.tasks.pop_front();
    return true;
}

// Ends a worker. The task that it was at is done, with this outcome, and the others wait for another one.
void WorkerPool::Lose(WorkerPlace worker, WorkerOutcome outcome) {
    if (!worker->tasks.empty()) {
        stopped_[worker->number] = worker->tasks.front().task.path;
        Finish(worker->tasks.front().number, std::move(outcome));
        worker->tasks.pop_front();
    }
    PutBack(worker->tasks);
    spawner_.Kill(worker->number);
    workers_.erase(worker);
}

// The same for one that has ended by itself, once it is known how.
void WorkerPool::AwaitEnd(WorkerPlace worker) {
    if (!worker->tasks.empty()) {
        dying_[worker->number] = worker->tasks.front().number;
        worker->tasks.pop_front();
    }
    Retire(worker);
}

void WorkerPool::Retire(WorkerPlace worker) {
    PutBack(worker->tasks);
    spawner_.Bury(worker->number);
    workers_.erase(worker);
}

void WorkerPool::TakeNews() {
    bool gone = false;
    for (WorkerNews news; spawner_.Receive(news, gone);) TakeNews(news);
    if (gone) FailAll({FailureKind::System, "there are no workers any more"});
}

void WorkerPool::TakeNews(const WorkerNews& news) {
    if (news.kind == WorkerNews::Kind::Ended) {
        const auto dying = dying_.find(news.worker);
        if (dying == dying_.end()) return;
        Finish(dying->second, OutcomeOfEnd(news.value));
        dying_.erase(dying);
    } else if (news.kind == WorkerNews::Kind::Lost) {
        const auto worker = std::find_if(workers_.begin(), workers_.end(),
                                         [&](const Worker& candidate) { return candidate.number == news.worker; });
        if (worker == workers_.end()) return;
        if (workers_.size() > 1) {
            mostWorkers_ = workers_.size() - 1;
            PutBack(worker->tasks);
        }
        const Failure failure{FailureKind::System, "no worker can be started: " + SystemFailure(news.value).text};
        Lose(worker, {{}, failure, true});
    } else {
        const auto path = stopped_.find(news.worker);
        if (path == stopped_.end()) return;
        if (news.kind == WorkerNews::Kind::Stuck) stuck_.Note(path->second);
        stopped_.erase(path);
    }
}

void WorkerPool::StopLateOnes() {
    if (options_.timeout.count() == 0) return;
    const Clock::time_point now = Clock::now();
    for (auto worker = workers_.begin(); worker != workers_.end();) {
        const auto current = worker++;
        if (current->tasks.empty() || !current->heard || now - current->since < options_.timeout) continue;
        Lose(current, {{}, {FailureKind::Limit, TooLateText(options_.timeout)}, true});
    }
}

void WorkerPool::RestartClocks() {
    for (Worker& worker : workers_) worker.since = Clock::now();
}

}  // namespace ZEMA

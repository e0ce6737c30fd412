// The tasks of a worker pool: their order, who gets them, what is held back.
#include "host/workers/WorkerPool.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>
#include <thread>
#include <utility>

#include "host/workers/Descriptors.h"

namespace ZEMA {

namespace {

constexpr std::size_t kHandful = 8;  // for which one worker is enough
constexpr double kSecondsAhead = 0.03;
constexpr std::size_t kMostAhead = 256;  // tasks

// The number of the descriptor of this process that a path is about, or -1: /dev/stdin, /dev/fd/3, /proc/self/fd/3, and
// what follows them.
int OwnDescriptor(std::string_view path) {
    constexpr std::pair<std::string_view, int> kNames[] = {
        {"/dev/stdin", 0}, {"/dev/stdout", 1}, {"/dev/stderr", 2}, {"/dev/fd/", -1}, {"/proc/self/fd/", -1},
    };
    for (const auto& [name, number] : kNames) {
        if (!path.starts_with(name)) continue;
        std::string rest(path.substr(name.size()));
        if (number >= 0) return rest.empty() || rest.front() == '/' ? number : -1;
        char* end = nullptr;
        const long named = std::strtol(rest.c_str(), &end, 10);
        const bool isNumber = end != rest.c_str() && (*end == '\0' || *end == '/');
        return isNumber && named >= 0 && named <= std::numeric_limits<int>::max() ? static_cast<int>(named) : -1;
    }
    return -1;
}

}  // namespace

WorkerPool::WorkerPool(const Work& work, const WorkerOptions& options)
    : options_(options),
      mostWorkers_(options.jobs != 0 ? options.jobs : std::max(1u, std::thread::hardware_concurrency())),
      spawner_(work, options.memory) {}

void WorkerPool::Run(const Source& source, const Sink& sink) {
    exhausted_ = false;
    Hear(0);  // of workers that have died since
    while (HandOut(sink)) {
        Pull(source);
        Distribute();
        if (IsBusy()) {
            Wait();
        } else if (finished_.empty()) {
            return;
        }
    }
    Cancel();
}

void WorkerPool::Pull(const Source& source) {
    const std::size_t wanted = mostWorkers_ * Depth() + kHandful;
    while (!exhausted_ && waiting_.size() < wanted) {
        WorkerTask task;
        exhausted_ = !source(task);
        if (!exhausted_) waiting_.push_back({nextTask_++, std::move(task)});
    }
}

bool WorkerPool::HandOut(const Sink& sink) {
    for (auto first = finished_.begin(); first != finished_.end() && first->first == firstOpen_;
         first = finished_.begin()) {
        WorkerOutcome outcome = std::move(first->second);
        finished_.erase(first);
        finishedBytes_ -= outcome.answer.size();
        ++firstOpen_;
        if (!sink(std::move(outcome))) return false;
    }
    return true;
}

void WorkerPool::Distribute() {
    while (!waiting_.empty()) {
        if (stuck_.Holds(waiting_.front().task.path)) {
            Finish(waiting_.front().number, {{}, {FailureKind::System, "its file system does not answer"}, true});
            waiting_.pop_front();
            continue;
        }
        Worker* const taker = FindTaker(waiting_.front());
        if (taker == nullptr) return;
        OpenTask task = std::move(waiting_.front());
        waiting_.pop_front();
        Give(*taker, std::move(task));
    }
}

// An idle worker, else a new one, else the one with the fewest tasks; null when this task has to wait.
WorkerPool::Worker* WorkerPool::FindTaker(const OpenTask& task) {
    if (HeldBytes() >= options_.held && task.number != firstOpen_) return nullptr;
    const auto fewest = std::min_element(workers_.begin(), workers_.end(), [](const Worker& a, const Worker& b) {
        return a.tasks.size() < b.tasks.size();
    });
    if (fewest != workers_.end() && fewest->tasks.empty()) return &*fewest;
    const bool many = options_.jobs != 0 || nextTask_ - firstOpen_ > kHandful;
    if (workers_.empty() || (many && workers_.size() < mostWorkers_)) {
        if (StartWorker()) return &workers_.back();
        if (workers_.empty()) {
            FailAll({FailureKind::System, "there are no workers any more"});
            return nullptr;
        }
    }
    // A descriptor goes with the first bytes of its request, so nothing may stand before them.
    if (OwnDescriptor(task.task.path) >= 0 || fewest->tasks.size() >= Depth()) return nullptr;
    return &*fewest;
}

void WorkerPool::Give(Worker& worker, OpenTask task) {
    LentDescriptor lent = OwnDescriptor(task.task.path);
    std::string content(reinterpret_cast<const char*>(&lent), sizeof lent);
    content += task.task.request;
    if (worker.tasks.empty()) worker.since = Clock::now();
    AppendFrame(FrameKind::Content, content, worker.outgoing);
    if (lent >= 0) {
        const ssize_t sent =
            SendWithDescriptor(worker.socket.Get(), worker.outgoing.data(), worker.outgoing.size(), lent, false);
        // Where there is no such descriptor here, there is none there.
        if (sent > 0) worker.outgoing.erase(0, static_cast<std::size_t>(sent));
    }
    worker.tasks.push_back(std::move(task));
}

// What waited behind the first task of a worker that has gone.
void WorkerPool::PutBack(std::deque<OpenTask>& tasks) {
    const auto inOrder = [](const OpenTask& a, const OpenTask& b) { return a.number < b.number; };
    const auto middle = static_cast<std::ptrdiff_t>(tasks.size());
    waiting_.insert(waiting_.begin(), std::make_move_iterator(tasks.begin()), std::make_move_iterator(tasks.end()));
    std::inplace_merge(waiting_.begin(), waiting_.begin() + middle, waiting_.end(), inOrder);
    tasks.clear();
}

void WorkerPool::Finish(std::uint64_t number, WorkerOutcome outcome) {
    if (number < firstOpen_) return;  // cancelled
    finishedBytes_ += outcome.answer.size();
    finished_.emplace(number, std::move(outcome));
}

void WorkerPool::FailAll(const Failure& failure) {
    for (Worker& worker : workers_) PutBack(worker.tasks);
    workers_.clear();
    for (const auto& [worker, task] : dying_) Finish(task, {{}, failure, true});
    dying_.clear();
    for (const OpenTask& task : waiting_) Finish(task.number, {{}, failure, true});
    waiting_.clear();
}

// Nobody wants what is still open. Workers that are at something of it would answer into the next run.
void WorkerPool::Cancel() {
    for (auto worker = workers_.begin(); worker != workers_.end();) {
        const auto next = std::next(worker);
        if (!worker->tasks.empty()) {
            spawner_.Kill(worker->number);
            workers_.erase(worker);
        }
        worker = next;
    }
    waiting_.clear();
    dying_.clear();
    finished_.clear();
    finishedBytes_ = 0;
    firstOpen_ = nextTask_;
}

bool WorkerPool::IsBusy() const {
    const auto isAtWork = [](const Worker& worker) { return !worker.tasks.empty(); };
    return !waiting_.empty() || !dying_.empty() || std::any_of(workers_.begin(), workers_.end(), isAtWork);
}

std::size_t WorkerPool::HeldBytes() const {
    std::size_t bytes = finishedBytes_;
    for (const Worker& worker : workers_) bytes += worker.incoming.Size();
    return bytes;
}

std::size_t WorkerPool::Depth() const {
    return 1 + std::min(kMostAhead, static_cast<std::size_t>(kSecondsAhead / std::max(secondsPerTask_, 1e-6)));
}

}  // namespace ZEMA

// Shares work among processes, and bears whatever becomes of them.
#pragma once

#include <poll.h>

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "core/Limits.h"
#include "host/system/Failure.h"
#include "host/workers/Frames.h"
#include "host/workers/Spawner.h"
#include "host/workers/StuckFileSystems.h"
#include "host/workers/WorkerOptions.h"

namespace ZEMA {

// What is to be done, and the path that it is about.
struct WorkerTask {
    std::string request;
    std::string path;
};

// What came of a task: an answer, or why there is none.
struct WorkerOutcome {
    std::string answer;
    Failure loss;
    bool passing = false;  // another try may have an answer
};

// Workers, and the tasks that they have or wait for. DocumentWorkers says what it promises.
//
// Each worker has as many tasks ahead as it does in some hundredths of a second, so that it goes on while this process
// has other things to do. Answers come in any order and are handed out in that of the tasks. Those that have to wait
// for an earlier one take up to so many bytes; then the answers of other workers stay in their sockets until it has
// come. The first open task never waits for that: what a dead worker left is given out first, and who has the first
// open task is always listened to.
//
// Errors:  none but those in outcomes. What a worker sends may be anything.
// Threads: one.
class WorkerPool {
public:
    using Source = std::function<bool(WorkerTask& task)>;
    using Sink = std::function<bool(WorkerOutcome outcome)>;

    // `work` is called in workers only.
    WorkerPool(const Work& work, const WorkerOptions& options);

    // False where no process could be made.
    bool IsOpen() const { return spawner_.Descriptor() >= 0; }

    // Until the source has no more and everything was handed out, or the sink wants no more.
    void Run(const Source& source, const Sink& sink);

    // What could not be put up around the workers so far, in sentences.
    const std::set<std::string>& MissingWalls() const { return missingWalls_; }

private:
    using Clock = std::chrono::steady_clock;

    // A task that is not handed out yet. The numbers are the order.
    struct OpenTask {
        std::uint64_t number = 0;
        WorkerTask task;
    };

    // A process, as seen from here.
    struct Worker {
        std::uint64_t number = 0;
        FileDescriptor socket;
        std::deque<OpenTask> tasks;  // given and not answered; it works on the first
        std::string outgoing;        // what its socket has not taken yet
        FrameReader incoming{kLargestAnswer};
        Clock::time_point since;  // when the first one's turn came, or the worker was last heard of
        bool heard = true;        // false while its answers are left in its socket
    };
    using WorkerPlace = std::list<Worker>::iterator;

    // Tasks on their way to workers (WorkerPool.cpp).
    void Pull(const Source& source);
    bool HandOut(const Sink& sink);
    void Distribute();
    Worker* FindTaker(const OpenTask& task);
    void Give(Worker& worker, OpenTask task);
    void PutBack(std::deque<OpenTask>& tasks);
    void Finish(std::uint64_t number, WorkerOutcome outcome);
    void FailAll(const Failure& failure);
    void Cancel();
    bool IsBusy() const;
    std::size_t HeldBytes() const;
    std::size_t Depth() const;

    // Workers and what becomes of them (WorkerPoolProcesses.cpp).
    bool StartWorker();
    void Flush(Worker& worker);
    void DecideWhomToHear();
    void Wait();
    void Hear(int milliseconds);  // for at most so long, -1 for any time
    std::chrono::microseconds Nap() const;
    int MillisecondsToWait(Clock::time_point now) const;
    void Listen(WorkerPlace worker);
    bool Take(Worker& worker, Frame frame);
    void Lose(WorkerPlace worker, WorkerOutcome outcome);
    void AwaitEnd(WorkerPlace worker);
    void Retire(WorkerPlace worker);
    void TakeNews();
    void TakeNews(const WorkerNews& news);
    void StopLateOnes();
    void RestartClocks();

    WorkerOptions options_;
    std::size_t mostWorkers_;
    Spawner spawner_;
    std::list<Worker> workers_;
    std::uint64_t nextWorker_ = 0;
    std::vector<pollfd> polled_;

    std::deque<OpenTask> waiting_;  // for a worker, in their order
    std::map<std::uint64_t, WorkerOutcome> finished_;
    std::size_t finishedBytes_ = 0;
    std::uint64_t nextTask_ = 0;
    std::uint64_t firstOpen_ = 0;  // the next to be handed out
    bool exhausted_ = false;       // the source
    double secondsPerTask_ = 0.001;

    std::map<std::uint64_t, std::uint64_t> dying_;  // tasks of workers whose end is awaited, by their workers
    std::map<std::uint64_t, std::string> stopped_;  // paths that stopped workers were at, by their workers
    StuckFileSystems stuck_;
    std::set<std::string> missingWalls_;
};

}  // namespace ZEMA

#include "host/workers/Spawner.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef __linux__
#include <sys/prctl.h>
#endif

#include <cerrno>
#include <fstream>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/workers/Descriptors.h"
#include "platform/Foundation/Uninterrupted.h"

namespace ZEMA {

namespace {

using Foundation::Uninterrupted;

// How long the end of a worker is waited for: a second.
constexpr int kWaits = 200;
constexpr useconds_t kWaitMicroseconds = 5000;

// One message to the spawner; Start brings the worker's socket with it.
struct Order {
    enum class Kind : std::uint8_t { Start, Kill, Bury };
    std::uint64_t worker = 0;
    Kind kind = Kind::Start;
};

// This process goes when `parent` goes, however that ends.
void GoWith(pid_t parent) {
#ifdef __linux__
    prctl(PR_SET_PDEATHSIG, SIGKILL);
#endif
    if (getppid() != parent) _exit(0);
}

// The letter that the kernel has for what a process does: 'R' for one that runs, 'S' and 'D' for one that waits; a dot
// where it does not tell.
char StateOf(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string stat;
    std::getline(file, stat);
    const std::size_t name = stat.rfind(") ");  // the name may hold anything
    return name == std::string::npos || name + 2 >= stat.size() ? '.' : stat[name + 2];
}

// The spawner's own side.
class Nursery {
public:
    Nursery(FileDescriptor control, const Work& work, std::uint64_t memory)
        : control_(std::move(control)), work_(work), memory_(memory) {}

    // Until the program closes its end.
    [[noreturn]] void Serve();

private:
    void Start(std::uint64_t worker, FileDescriptor socket);
    void Kill(std::uint64_t worker);
    void Bury(std::uint64_t worker);
    void Tell(const WorkerNews& news) { SendWithDescriptor(control_.Get(), &news, sizeof news, -1); }

    FileDescriptor control_;
    const Work& work_;
    std::uint64_t memory_;
    std::map<std::uint64_t, pid_t> living_;
    std::vector<pid_t> abandoned_;  // killed, and waited for by the way only: it may take for ever
};

void Nursery::Serve() {
    for (;;) {
        Order order;
        FileDescriptor socket;
        if (ReceiveWithDescriptor(control_.Get(), &order, sizeof order, socket) != sizeof order) break;
        std::erase_if(abandoned_, [](pid_t process) { return waitpid(process, nullptr, WNOHANG) != 0; });
        if (order.kind == Order::Kind::Start) Start(order.worker, std::move(socket));
        if (order.kind == Order::Kind::Kill) Kill(order.worker);
        if (order.kind == Order::Kind::Bury) Bury(order.worker);
    }
    for (const auto& [worker, process] : living_) kill(process, SIGKILL);
    _exit(0);
}

void Nursery::Start(std::uint64_t worker, FileDescriptor socket) {
    const pid_t self = getpid();
    const pid_t process = fork();
    if (process < 0) return Tell({worker, WorkerNews::Kind::Lost, errno});
    if (process > 0) {
        living_[worker] = process;
        return;
    }
    GoWith(self);
    RunWorker(socket.Get(), work_, memory_);
}

void Nursery::Kill(std::uint64_t worker) {
    const auto found = living_.find(worker);
    if (found == living_.end()) return;
    const char state = StateOf(found->second);
    kill(found->second, SIGKILL);
    abandoned_.push_back(found->second);
    living_.erase(found);
    Tell({worker, state == 'S' || state == 'D' ? WorkerNews::Kind::Stuck : WorkerNews::Kind::Killed, 0});
}

// A worker whose socket is closed is about to end. One that does not is made to, and one that cannot is left alone.
void Nursery::Bury(std::uint64_t worker) {
    const auto found = living_.find(worker);
    if (found == living_.end()) return;
    const pid_t process = found->second;
    living_.erase(found);
    kill(process, SIGKILL);
    int status = SIGKILL;
    pid_t ended = 0;
    for (int wait = 0; wait < kWaits && ended == 0; ++wait) {
        if (wait > 0) usleep(kWaitMicroseconds);
        ended = waitpid(process, &status, WNOHANG);
    }
    if (ended == 0) abandoned_.push_back(process);
    Tell({worker, WorkerNews::Kind::Ended, status});
}

}  // namespace

Spawner::Spawner(const Work& work, std::uint64_t memory) {
    SocketPair pair = MakeSocketPair(true);
    if (!pair.ours.IsOpen()) return;
    const pid_t self = getpid();
    process_ = fork();
    if (process_ == 0) {
        GoWith(self);
        signal(SIGCHLD, SIG_DFL);  // the status of a worker is wanted
        KeepOnly(pair.theirs.Get());
        Nursery(std::move(pair.theirs), work, memory).Serve();
    }
    if (process_ > 0) control_ = std::move(pair.ours);
}

Spawner::~Spawner() {
    control_ = FileDescriptor();  // at which it ends
    if (process_ > 0) Uninterrupted([this] { return waitpid(process_, nullptr, 0); });
}

bool Spawner::Start(std::uint64_t worker, FileDescriptor theirSocket) {
    const Order order{worker, Order::Kind::Start};
    return SendWithDescriptor(control_.Get(), &order, sizeof order, theirSocket.Get(), false) == sizeof order;
}

bool Spawner::Kill(std::uint64_t worker) {
    const Order order{worker, Order::Kind::Kill};
    return SendWithDescriptor(control_.Get(), &order, sizeof order, -1, false) == sizeof order;
}

bool Spawner::Bury(std::uint64_t worker) {
    const Order order{worker, Order::Kind::Bury};
    return SendWithDescriptor(control_.Get(), &order, sizeof order, -1, false) == sizeof order;
}

bool Spawner::Receive(WorkerNews& news, bool& gone) {
    FileDescriptor none;
    const ssize_t count = ReceiveWithDescriptor(control_.Get(), &news, sizeof news, none, false);
    gone = count == 0 || (count < 0 && errno != EAGAIN && errno != EWOULDBLOCK);
    return count == sizeof news;
}

}  // namespace ZEMA

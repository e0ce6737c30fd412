// The process that workers come from.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "host/system/FileDescriptor.h"
#include "host/workers/Worker.h"

namespace ZEMA {

// What the spawner has to say of a worker.
struct WorkerNews {
    enum class Kind : std::uint8_t {
        Lost,    // it could not be started; `value` is an errno value
        Ended,   // `value` is its status as wait() has it
        Killed,  // and it was at work
        Stuck,   // as Killed, but it was waiting, which a worker does for a file system alone
    };
    std::uint64_t worker = 0;
    Kind kind = Kind::Lost;
    std::int32_t value = 0;
};

// A copy of this program, made before it has opened anything, which makes a copy of itself for each worker. So a worker
// has nothing of what the program has opened meanwhile. The spawner and its workers end when the program ends, however
// that happens.
//
// Ownership: ends them all when it goes.
class Spawner {
public:
    // `work` is called in workers only. Not open afterwards where the process could not be copied.
    Spawner(const Work& work, std::uint64_t memory);
    Spawner(const Spawner&) = delete;
    Spawner& operator=(const Spawner&) = delete;
    ~Spawner();

    // None of them waits; false when the spawner has gone. Numbers of workers are the caller's.
    bool Start(std::uint64_t worker, FileDescriptor theirSocket);
    bool Kill(std::uint64_t worker);  // answered by Killed or Stuck
    bool Bury(std::uint64_t worker);  // one whose socket has been closed: answered by Ended

    // Readable when there are news. False when there are none, and `gone` is set when there will be none.
    int Descriptor() const { return control_.Get(); }
    bool Receive(WorkerNews& news, bool& gone);

private:
    FileDescriptor control_;
    int process_ = -1;
};

}  // namespace ZEMA

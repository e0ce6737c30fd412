// The other side of a worker pool: what runs in a worker.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace ZEMA {

// What a worker does: takes a request and returns the answer. For as long as that takes it calls `stillThere` now and
// then, unless a request is something that has to end in the time given to one. It runs in a confined process that
// ends at any moment.
using Work = std::function<std::string(std::string_view request, const std::function<void()>& stillThere)>;

// In front of each request: the number of a descriptor that the program lends for it, under which the worker has it
// too, or -1.
using LentDescriptor = std::int32_t;

// How a worker leaves that has something to say.
inline constexpr int kWorkerOutOfMemory = 3;
inline constexpr int kWorkerAnswerTooLarge = 4;

// Gives up everything but the socket, limits the memory, confines the process, and answers requests until the other
// side has gone. Leaves the process, and runs no destructor in it.
[[noreturn]] void RunWorker(int socket, const Work& work, std::uint64_t memory);

}  // namespace ZEMA

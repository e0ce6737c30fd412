// The storage tree for the length of one piece of work.
#pragma once

#include <mutex>

namespace ZEMA {

// Registers the back ends of the storage tree, the local file system and archives, with the object factory, and empties
// the object registry when it goes. So every piece of work starts from nothing and leaves nothing behind, whether it
// ends by returning or by an exception.
//
// Whoever uses the tree holds a session for as long as the work takes, and drops whatever it opened before the session.
//
// Threads: one session at a time in a process; a second one waits for the first to go, and must not be made by the
//          thread that has the first. The registry is shared by the whole process, and emptying it would pull the
//          factories away from under another session.
class StorageSession {
public:
    // What the tree is used for. Whoever only reads has no archive opened for changes: that would wake everybody who
    // watches the file for writing, and would make an archive of an empty file.
    enum class Purpose { Anything, Reading };

    explicit StorageSession(Purpose purpose = Purpose::Anything);
    StorageSession(const StorageSession&) = delete;
    StorageSession& operator=(const StorageSession&) = delete;
    ~StorageSession() = default;

    // False when a back end could not be registered; nothing can be opened then.
    bool Ready() const { return ready_; }

private:
    // Empties the registry when it goes.
    struct RegistryEmptier {
        ~RegistryEmptier();
    };

    // In this order: the registry is emptied under the lock, also when registering throws.
    std::unique_lock<std::mutex> lock_;
    RegistryEmptier emptier_;
    bool ready_;
};

}  // namespace ZEMA

// The native paths of all local directories and files that are alive.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/String.h"

namespace ZEMA {

// Counts, for the whole process, how many live objects of the local file system stand at each native path, so that none
// of them is removed from the disk under its user. Paths compare exactly, case included.
//
// Threads: guarded by StorageMutex.
class OpenPathRegistry {
public:
    // One object's path: it counts from construction to destruction, or until the registry is cleared.
    class Entry {
    public:
        explicit Entry(CFStringRef nativePath);
        ~Entry();
        Entry(const Entry&) = delete;
        Entry& operator=(const Entry&) = delete;

        CFStringRef NativePath() const { return path_.CFString(); }

    private:
        String path_;
        std::uint32_t generation_;
    };

    static std::size_t Count(const String& nativePath);

    // Forgets all paths; the objects that stand at them no longer count.
    static void Clear();
};

}  // namespace ZEMA

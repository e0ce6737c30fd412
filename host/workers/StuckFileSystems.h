// File systems that do not answer any more.
#pragma once

#include <map>
#include <string>

namespace ZEMA {

// Counts by file system what got stuck since it last answered. Paths are told apart by their spelling and the list of
// mounts alone, since asking the file system would get stuck as well: a path through a link counts for where the link
// lies.
class StuckFileSystems {
public:
    void Note(const std::string& path);
    void Clear(const std::string& path);  // it answered

    // Whether two got stuck where this path leads.
    bool Holds(const std::string& path) const;

private:
    std::map<std::string, int> counts_;  // by the folder that the file system is mounted on
};

}  // namespace ZEMA

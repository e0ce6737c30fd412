// Which file system a folder lies on, and where in it: so that a disk that is away is not taken for one that is empty.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <string>

namespace ZEMA {

// A folder as its file system knows it, wherever that is mounted.
struct FolderPlace {
    // The UUID, or the type and the number that the file system gives itself. Empty where it has neither: the number of
    // the device is another one after every start. An empty one equals none.
    std::string fileSystem;
    std::string place;  // the path in it
    bool isOnNetwork = false;
};

// Tells the places of folders. What is mounted is looked up anew whenever a mount appears that was not known.
class FileSystems {
public:
    // `folder` is an absolute path without links. An empty place where the system does not answer.
    FolderPlace PlaceOf(const std::string& folder);

private:
    // One line of the system's list of mounts.
    struct Mount {
        std::string root;   // the path in the file system
        std::string point;  // and where that is seen
        std::string fileSystem;
        bool isOnNetwork = false;
    };

    const Mount* FindMount(const std::string& folder, std::uint64_t number, dev_t device);
    void ReadMounts();
    std::string UuidOf(dev_t device);

    std::map<std::uint64_t, Mount> mounts_;  // by the numbers of the system
    std::map<dev_t, std::string> uuids_;
    bool uuidsAreRead_ = false;
};

// Whether other machines may write there at the same time.
bool IsOnNetwork(const std::string& path);

}  // namespace ZEMA

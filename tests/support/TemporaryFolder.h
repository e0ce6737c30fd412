// A folder of a test's own.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>

namespace ZEMA::testing {

// Made empty, under a real path without links, and removed with all that the test left in it.
class TemporaryFolder {
public:
    explicit TemporaryFolder(const std::filesystem::path& around = std::filesystem::temp_directory_path()) {
        std::string name = (std::filesystem::canonical(around) / "wqf-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder: " + name);
        path_ = name;
    }
    ~TemporaryFolder() {
        namespace fs = std::filesystem;
        std::error_code ignored;
        // What a test made unwritable must not stay behind.
        for (fs::recursive_directory_iterator item(path_, ignored), end; item != end; item.increment(ignored)) {
            if (item->symlink_status(ignored).type() != fs::file_type::directory) continue;
            fs::permissions(item->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
        }
        fs::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& Path() const { return path_; }
    std::string operator/(const std::string& name) const { return (path_ / name).string(); }

    // Makes or replaces a file, and gives its path.
    std::string Write(const std::string& name, const std::string& bytes) const {
        std::ofstream(path_ / name, std::ios::binary) << bytes;
        return *this / name;
    }
    std::string Read(const std::string& name) const {
        std::ifstream file(path_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::filesystem::path path_;
};

}  // namespace ZEMA::testing

#include "host/documents/DocumentFinder.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "host/system/FileDescriptor.h"
#include "host/system/Paths.h"

namespace ZEMA {

namespace {

namespace fs = std::filesystem;

bool EndsIn(std::string_view name, std::string_view ending) {
    if (name.size() < ending.size()) return false;
    const auto sameLetter = [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
    };
    return std::equal(ending.begin(), ending.end(), name.end() - static_cast<std::ptrdiff_t>(ending.size()),
                      sameLetter);
}

// Looks through one folder and puts the folders in it on the list of those to come.
void SearchFolder(const std::string& folder, std::vector<std::string>& folders, std::vector<FoundDocument>& documents) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        std::error_code unknown;  // an entry that has gone meanwhile is neither
        if (entry->symlink_status(unknown).type() == fs::file_type::directory) {
            folders.push_back(entry->path().string());
        } else if (IsDocumentName(entry->path().filename().string()) && entry->is_regular_file(unknown)) {
            documents.push_back({entry->path().string(), {}});
        }
    }
    if (error) documents.push_back({folder, SystemFailure(error.value())});
}

}  // namespace

Result<std::vector<std::string>> ReadPathList(const std::string& file) {
    const Result<std::string> bytes = ReadStream(file);
    if (!bytes) return bytes.Why();
    std::vector<std::string> paths;
    for (std::size_t start = 0; start < bytes->size();) {
        const std::size_t end = std::min(bytes->find('\0', start), bytes->size());
        paths.push_back(bytes->substr(start, end - start));
        start = end + 1;
    }
    return paths;
}

bool IsDocumentName(std::string_view name) {
    return EndsIn(name, ".wqf") || EndsIn(name, ".wqfml");
}

bool FindDocuments(const std::string& path, std::vector<FoundDocument>& documents,
                   const std::function<void()>& inFolder) {
    std::error_code error;
    if (!fs::is_directory(path, error)) {
        documents.push_back({path, LeadsIntoFile(path) ? Failure() : CheckRegularFile(path)});
        return true;
    }
    std::vector<FoundDocument> found;
    for (std::vector<std::string> folders = {path}; !folders.empty();) {
        const std::string folder = std::move(folders.back());
        folders.pop_back();
        if (inFolder) inFolder();
        SearchFolder(folder, folders, found);
    }
    std::sort(found.begin(), found.end(),
              [](const FoundDocument& a, const FoundDocument& b) { return a.path < b.path; });
    documents.insert(documents.end(), found.begin(), found.end());
    return !found.empty();
}

}  // namespace ZEMA

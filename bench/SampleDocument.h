// A document of a given size on the disk, for as long as a measurement needs it.
#pragma once

#include <filesystem>

namespace bench {

// Packs a model of either markup format (5 or 4) with the standard zip program in a new temporary folder, and removes
// it in the end.
class SampleDocument {
public:
    SampleDocument(int format, int brickCount);
    ~SampleDocument();
    SampleDocument(const SampleDocument&) = delete;
    SampleDocument& operator=(const SampleDocument&) = delete;

    const std::filesystem::path& Path() const { return path_; }

private:
    std::filesystem::path folder_;
    std::filesystem::path path_;
};

}  // namespace bench

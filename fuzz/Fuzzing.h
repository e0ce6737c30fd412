// What the fuzz targets share. A target is one function, LLVMFuzzerTestOneInput, in a source of its own: libFuzzer
// calls it, and Replay.cpp does with inputs that are kept.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "storage/File.h"
#include "tests/support/TemporaryFolder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace ZEMA::fuzzing {

inline std::string_view TextOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// Ends the program, as a crash that the fuzzer keeps, where a promise is broken.
inline void Require(bool holds, const char* promise) {
    if (holds) return;
    std::fprintf(stderr, "broken: %s\n", promise);
    std::abort();
}

// What a target draws from the bytes of an input; zeros when they are used up.
class Choices {
public:
    explicit Choices(std::string_view bytes) : bytes_(bytes) {}

    bool AreLeft() const { return !bytes_.empty(); }

    unsigned Byte() {
        if (bytes_.empty()) return 0;
        const auto byte = static_cast<unsigned char>(bytes_.front());
        bytes_.remove_prefix(1);
        return byte;
    }
    std::size_t Below(std::size_t count) { return count == 0 ? 0 : Byte() % count; }

    // Mostly short.
    std::string_view Text() {
        const std::size_t wanted = Byte() % 24;
        const std::size_t size = std::min(wanted, bytes_.size());
        const std::string_view text = bytes_.substr(0, size);
        bytes_.remove_prefix(size);
        return text;
    }

private:
    std::string_view bytes_;
};

// An input that is a document and what is to be done to it: the last byte tells how many bytes before it are choices.
// So every archive without a comment is an input, as it is.
struct DocumentAndChoices {
    explicit DocumentAndChoices(std::string_view input) : document(input) {
        const std::size_t count = input.empty() ? 0 : static_cast<unsigned char>(input.back());
        if (count == 0 || count >= input.size()) return;
        document.remove_suffix(count + 1);
        choices = Choices(input.substr(document.size(), count));
    }

    std::string_view document;
    Choices choices{""};
};

// Where files live in memory, if there is such a place. It goes with the program.
inline const testing::TemporaryFolder& Folder() {
    static const testing::TemporaryFolder folder(
        std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : std::filesystem::temp_directory_path());
    return folder;
}

// A file in memory, which may be written only where that is allowed.
class MemoryFile : public File {
public:
    MemoryFile(std::string_view contents, bool writable)
        : File(String(), nullptr), bytes(contents), writable_(writable) {}

    bool ReadAt(std::uint64_t offset, std::uint64_t size, void* buffer, std::uint64_t* done) override {
        const std::uint64_t count = offset > bytes.size() ? 0 : std::min<std::uint64_t>(size, bytes.size() - offset);
        std::copy_n(bytes.data() + offset * (count != 0), count, static_cast<char*>(buffer));
        if (done != nullptr) *done = count;
        return count == size;
    }
    bool WriteAt(std::uint64_t offset, std::uint64_t size, const void* buffer, std::uint64_t* done) override {
        Require(writable_ && offset <= bytes.size(), "only what is open for changes is written, without holes");
        bytes.replace(offset, size, static_cast<const char*>(buffer), size);
        if (done != nullptr) *done = size;
        return true;
    }
    std::uint64_t GetSize() override { return bytes.size(); }
    bool SetSize(std::uint64_t size) override {
        Require(writable_, "only what is open for changes is cut");
        bytes.resize(size);
        return true;
    }

    // An archive is read and written at places only.
    bool Read(std::uint64_t, void*, std::uint64_t*) override { return false; }
    bool Write(std::uint64_t, const void*, std::uint64_t*) override { return false; }
    std::uint64_t GetPosition() override { return 0; }
    bool Seek(std::uint64_t) override { return false; }

    std::string bytes;

protected:
    ~MemoryFile() override = default;

private:
    const bool writable_;
};

}  // namespace ZEMA::fuzzing

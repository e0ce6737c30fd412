// A file of the system, by its descriptor, for the storage classes.
#pragma once

#include <cstdint>

#include "storage/File.h"

namespace ZEMA {

// The bytes of a descriptor's file from `start` on, read and written at their places. The descriptor is the caller's
// and outlives this; one that is not open for writing makes a file that can only be read. Nobody else changes the size.
//
// Errors: the first error of the system is kept.
class DescriptorFile : public File {
public:
    explicit DescriptorFile(int descriptor, std::uint64_t start = 0);

    int Descriptor() const { return descriptor_; }
    std::uint64_t Start() const { return start_; }
    int Error() const { return error_; }  // an errno value, or 0

    bool ReadAt(std::uint64_t offset, std::uint64_t size, void* buffer, std::uint64_t* done) override;
    bool WriteAt(std::uint64_t offset, std::uint64_t size, const void* buffer, std::uint64_t* done) override;
    bool Read(std::uint64_t size, void* buffer, std::uint64_t* done) override;
    bool Write(std::uint64_t size, const void* buffer, std::uint64_t* done) override;
    std::uint64_t GetSize() override { return size_; }
    bool SetSize(std::uint64_t size) override;
    std::uint64_t GetPosition() override { return position_; }
    bool Seek(std::uint64_t position) override;

protected:
    ~DescriptorFile() override;

private:
    bool Note(bool succeeded);

    const int descriptor_;
    const std::uint64_t start_;
    std::uint64_t size_ = 0;
    std::uint64_t position_ = 0;
    int error_ = 0;
};

}  // namespace ZEMA

// The checksum of archive members.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ZEMA {

// CRC-32 as archives use it: reflected polynomial 0xEDB88320, all ones at the start, complemented at the end. Bytes may
// come in pieces.
class Crc32 {
public:
    void Update(const void* bytes, std::size_t size);
    std::uint32_t Value() const { return ~state_; }

private:
    std::uint32_t state_ = 0xFFFFFFFF;
};

}  // namespace ZEMA

#include "storage/zip/Crc32.h"

#include <array>

namespace ZEMA {

namespace {

// The polynomial of the archives' checksum (PKWARE APPNOTE 4.4.7), its bits reversed.
constexpr std::uint32_t kPolynomial = 0xEDB88320;

constexpr std::array<std::uint32_t, 256> MakeTable() {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t remainder = byte;
        for (int bit = 0; bit < 8; ++bit) remainder = remainder >> 1 ^ ((remainder & 1) != 0 ? kPolynomial : 0);
        table[byte] = remainder;
    }
    return table;
}

constexpr std::array<std::uint32_t, 256> kTable = MakeTable();

}  // namespace

void Crc32::Update(const void* bytes, std::size_t size) {
    const auto* next = static_cast<const unsigned char*>(bytes);
    std::uint32_t state = state_;
    for (const auto* end = next + size; next != end; ++next) state = kTable[(state ^ *next) & 0xFF] ^ state >> 8;
    state_ = state;
}

}  // namespace ZEMA

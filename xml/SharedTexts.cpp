#include "xml/SharedTexts.h"

#include <cstdint>
#include <cstring>

namespace ZEMA {

namespace {

// Mixes the length and the first and last eight bytes, which tell names and numbers apart well enough.
std::size_t HashOf(std::string_view text) {
    std::uint64_t head = 0;
    std::uint64_t tail = 0;
    const std::size_t count = text.size() < sizeof head ? text.size() : sizeof head;
    std::memcpy(&head, text.data(), count);
    std::memcpy(&tail, text.data() + text.size() - count, count);
    const std::uint64_t mixed = (head ^ (tail << 7) ^ text.size()) * 0x9E3779B97F4A7C15U;
    return static_cast<std::size_t>(mixed >> 40);
}

AString CopyOf(std::string_view text) {
    return AString(text.data(), static_cast<std::uint32_t>(text.size()));
}

}  // namespace

AString SharedTexts::Share(std::string_view text) {
    if (text.empty() || text.size() > kLongest) return CopyOf(text);
    AString& slot = slots_[HashOf(text) % kSlotCount];
    if (slot.View() != text) slot = CopyOf(text);
    return slot;
}

}  // namespace ZEMA

#include "loader/Version.h"

#include <algorithm>

namespace ZEMA {

void Version::AppendTo(String& out) const {
    const auto lastNonZero = std::find_if(components.rbegin(), components.rend(), [](auto part) { return part != 0; });
    const std::size_t count = std::max<std::size_t>(1, static_cast<std::size_t>(components.rend() - lastNonZero));
    out.AppendNumber(components[0]);
    for (std::size_t index = 1; index < count; ++index) {
        out.Append(".");
        out.AppendNumber(components[index]);
    }
}

// A version may end after any number; only a "." promises one more.
bool Version::ParseFrom(const String& text, std::uint32_t& position) {
    for (std::size_t index = 0; index < components.size(); ++index) {
        if (index > 0) {
            if (!text.CharAtIs(position, '.')) return true;
            ++position;
        }
        if (!text.ScanUInt32(components[index], position)) return false;
    }
    return true;
}

}  // namespace ZEMA

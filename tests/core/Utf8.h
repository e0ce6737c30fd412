// Texts as UTF-8, which a failed expectation prints.
#pragma once

#include <string>
#include <vector>

#include "core/String.h"

namespace ZEMA {

inline std::string Utf8(const String& text) {
    return std::string(text.ToAString().View());
}
inline std::vector<std::string> Utf8(const BasicArray<String>& texts) {
    std::vector<std::string> result;
    for (const String& text : texts) result.push_back(Utf8(text));
    return result;
}
inline String Text(const char* utf8) {
    return FromUtf8(AString(utf8));
}

}  // namespace ZEMA

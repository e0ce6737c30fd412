// What the tests of these classes share.
#pragma once

#include <string>

#include "platform/Foundation/CFPointer.h"
#include "tests/platform/Vectors.h"

namespace Foundation {

using ZEMA::Json;
using ZEMA::MakeText;
using ZEMA::Text;
using ZEMA::TextOf;
using ZEMA::VectorsOf;
using StringPointer = CFPointer<CFStringRef>;

inline std::string Utf8(CFStringRef text) {
    if (text == nullptr) return "(null)";
    std::string bytes(static_cast<std::size_t>(3 * CFStringGetLength(text)) + 1, '\0');
    if (!CFStringGetCString(text, bytes.data(), static_cast<CFIndex>(bytes.size()), kCFStringEncodingUTF8))
        return "(?)";
    return bytes.c_str();
}

inline std::string Utf8(const StringPointer& text) {
    return Utf8(text.Get());
}

}  // namespace Foundation

// Texts for and from loaders.
#pragma once

#include <string>
#include <vector>

#include "loader/ModelLoader.h"

namespace ZEMA::testing {

using Words = std::vector<std::string>;

inline std::string Utf8(const String& text) {
    return std::string(text.ToAString().View());
}

inline AString Bytes(const std::string& text) {
    return {text.data(), static_cast<std::uint32_t>(text.size())};
}

inline std::string Repeated(const std::string& text, std::size_t count) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i) result += text;
    return result;
}

// Every error of a loader in words, in order.
inline Words Descriptions(const ModelLoader& loader) {
    Words words;
    for (const auto& error : loader.errors) {
        String text;
        error->Describe(text);
        words.push_back(Utf8(text));
    }
    return words;
}

}  // namespace ZEMA::testing

// Texts for and from loaders.
#pragma once

#include <string>
#include <vector>

#include "loader/ModelLoader.h"
#include "tests/xml/Markup.h"

namespace ZEMA::testing {

using Words = std::vector<std::string>;

inline std::string Utf8(const String& text) {
    return std::string(text.ToAString().View());
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

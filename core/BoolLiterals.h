// The texts that stand for a boolean, for String and the scans over bytes.
#pragma once

namespace ZEMA {

struct BoolLiteral {
    const char* text;  // lower case, ASCII
    bool value;
};

// In the order in which they are tried: "no" takes the front of any longer word.
inline constexpr BoolLiteral kBoolLiterals[] = {{"0", false},  {"1", true},      {"no", false},
                                                {"yes", true}, {"false", false}, {"true", true}};

}  // namespace ZEMA

// Text on its way to people and files: always valid UTF-8.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <string>
#include <string_view>

namespace ZEMA {

bool IsUtf8(std::string_view bytes);

// The bytes with U+FFFD in place of every byte that belongs to no character, so that a file name of any bytes can be
// shown.
std::string ReplaceInvalidUtf8(std::string_view bytes);

// Any bytes as ASCII text (RFC 4648, section 4), for formats that hold nothing but characters.
std::string Base64Of(std::string_view bytes);

// UTF-8 with every control character (U+0000 to U+001F, U+007F to U+009F) as \u00XX: one line stays one line, and no
// document steers a terminal.
std::string EscapeControls(std::string_view utf8);

// The text in UTF-8, with U+FFFD for half a surrogate pair.
std::string Utf8Of(CFStringRef text);

}  // namespace ZEMA

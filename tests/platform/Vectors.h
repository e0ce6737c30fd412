// Measured answers of the platform's frameworks, and short ways to write texts and compare objects.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace ZEMA {

using Json = nlohmann::json;

// The rows of one file. In them a text that is not valid Unicode is an array of units, under its key with "_units".
inline Json VectorsOf(const char* file) {
    std::ifstream stream(std::string(ZEMA_VECTORS "/") + file);
    return Json::parse(stream);
}

struct ObjectReleaser {
    void operator()(CFTypeRef object) const { CFRelease(object); }
};

// Takes over the caller's one reference.
template <class Reference>
using Held = std::unique_ptr<std::remove_pointer_t<Reference>, ObjectReleaser>;
using Text = Held<CFStringRef>;

using Units = std::vector<UniChar>;

// By the standard library, so that it does not rest on the decoder that it helps to test.
inline Units UnitsFromUtf8(const std::string& bytes) {
    const std::u16string units = std::filesystem::path(bytes).u16string();
    return Units(units.begin(), units.end());
}

inline Text MakeText(const Units& units) {
    return Text(CFStringCreateWithCharacters(nullptr, units.data(), static_cast<CFIndex>(units.size())));
}
inline Text MakeText(const std::string& utf8) {
    return MakeText(UnitsFromUtf8(utf8));
}

inline Units UnitsOf(const Json& value) {
    return value.is_string() ? UnitsFromUtf8(value.get<std::string>()) : value.get<Units>();
}
inline Units UnitsOf(const Json& row, const std::string& key) {
    return row.contains(key) ? UnitsOf(row[key]) : UnitsOf(row.at(key + "_units"));
}
inline Text TextOf(const Json& row, const std::string& key) {
    return MakeText(UnitsOf(row, key));
}

inline Units UnitsOf(CFStringRef text) {
    Units units(static_cast<std::size_t>(CFStringGetLength(text)));
    CFStringGetCharacters(text, {0, CFStringGetLength(text)}, units.data());
    return units;
}

inline CFRange WholeOf(CFStringRef text) {
    return {0, CFStringGetLength(text)};
}
inline CFRange RangeOf(const Json& value) {
    return {value[0].get<CFIndex>(), value[1].get<CFIndex>()};
}

inline std::vector<UInt8> BytesFromHex(const std::string& hex) {
    std::vector<UInt8> bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2) {
        bytes.push_back(static_cast<UInt8>(std::stoul(hex.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

inline CFStringEncoding EncodingOf(const Json& row) {
    const std::string name = row.at("encoding");
    return name == "ascii"     ? kCFStringEncodingASCII
           : name == "utf8"    ? kCFStringEncodingUTF8
           : name == "utf16be" ? kCFStringEncodingUTF16BE
                               : kCFStringEncodingUTF16LE;
}

inline Held<CFMutableArrayRef> MakeArray(std::initializer_list<const char*> texts) {
    Held<CFMutableArrayRef> array(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
    for (const char* text : texts) CFArrayAppendValue(array.get(), MakeText(text).get());
    return array;
}

inline std::vector<Units> PiecesOf(CFArrayRef array) {
    std::vector<Units> pieces;
    for (CFIndex index = 0; index < CFArrayGetCount(array); ++index) {
        pieces.push_back(UnitsOf(static_cast<CFStringRef>(CFArrayGetValueAtIndex(array, index))));
    }
    return pieces;
}

}  // namespace ZEMA

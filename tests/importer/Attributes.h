// Attribute dictionaries as tests look at them, and models to import.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <string>

#include "host/print/JsonWriter.h"
#include "host/print/Value.h"
#include "platform/Foundation/CFPointer.h"
#include "platform/Foundation/NSPathUtilities.h"

namespace ZEMA::testing {

using Attributes = Foundation::CFPointer<CFMutableDictionaryRef>;

inline Attributes NewAttributes() {
    return Attributes(CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks,
                                                &kCFTypeDictionaryValueCallBacks));
}

// As JSON, keys in the order of their units.
inline std::string TextOf(const Attributes& attributes) {
    return JsonText(ValueOf(attributes.Get()));
}

inline Foundation::CFPointer<CFStringRef> PathString(const std::string& path) {
    return Foundation::StringWithFileSystemRepresentation(path);
}

// A format-5 model with this content below its root.
inline std::string Model5(const std::string& content) {
    return R"(<?xml version="1.0" encoding="UTF-8"?><WQFML versionMajor="5" versionMinor="0">)" + content + "</WQFML>";
}

// One brick of one part, all with the same reference.
inline std::string Brick5(const std::string& refID, const std::string& design) {
    return "<Brick refID=\"" + refID + "\" designID=\"" + design + "\"><Part refID=\"" + refID + "\" designID=\"" +
           design + "\" materials=\"21\"><Bone refID=\"" + refID + "\"/></Part></Brick>";
}

// A small model that has something for every attribute, and what comes of it.
inline std::string SmallModel5() {
    return Model5(R"(<Meta><Application name="Builder" versionMajor="4" versionMinor="2"/><Brand name="Castle"/>)"
                  R"(<Author name="Grete Müller"/><Description lang="de">Ein Tor</Description></Meta><Bricks>)" +
                  Brick5("1", "4100") + Brick5("2", "42") + Brick5("3", "4100") + "</Bricks>");
}
inline constexpr const char* kSmallModelText =
    R"({"com_zema_wqf_listofbricks":["4100","42"],"com_zema_wqf_numberofbricks":3,)"
    R"("kMDItemAuthors":["Grete Müller"],"kMDItemCreator":"Builder 4.2","kMDItemDescription":{"de":"Ein Tor"},)"
    R"("kMDItemKeywords":["Castle"],"kMDItemVersion":"5"})";

}  // namespace ZEMA::testing

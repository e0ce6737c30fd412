#include "importer/AttributeSet.h"

#include <CoreServices/CoreServices.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "core/BasicSet.h"
#include "core/Less.h"
#include "platform/Foundation/CFPointer.h"

namespace ZEMA {

namespace {

using Foundation::CFPointer;
using Meta = StorageScene2::Meta;

constexpr CFIndex kCapacityHint = 10;

CFStringRef NumberOfBricksName() {
    return CFSTR("com_zema_wqf_numberofbricks");
}

CFStringRef ListOfBricksName() {
    return CFSTR("com_zema_wqf_listofbricks");
}

CFPointer<CFMutableArrayRef> NewArray() {
    return CFPointer<CFMutableArrayRef>(
        CFArrayCreateMutable(kCFAllocatorDefault, kCapacityHint, &kCFTypeArrayCallBacks));
}

CFPointer<CFMutableDictionaryRef> NewDictionary() {
    return CFPointer<CFMutableDictionaryRef>(CFDictionaryCreateMutable(
        kCFAllocatorDefault, kCapacityHint, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
}

// An immutable text, so that what the scene does with its own later cannot be seen through an attribute.
CFPointer<CFStringRef> Copied(const String& text) {
    return CFPointer<CFStringRef>(text.CreateCFString());
}

bool Is(const String& text, CFStringRef word) {
    return CFEqual(text.CFString(), word);
}

// Texts in the order in which they were first seen, each once. The set beside the list keeps a document of many
// authors from costing their number squared.
class DistinctTexts {
public:
    void Add(const String& text) {
        if (seen_.Insert(text)) CFArrayAppendValue(texts_.Get(), Copied(text).Get());
    }
    // The attributes named "name" of an entry.
    void AddNamesOf(const Meta& entry) {
        for (const Meta::Attribute& attribute : entry.attributes) {
            if (Is(attribute.key, CFSTR("name"))) Add(attribute.value);
        }
    }
    CFArrayRef Texts() const { return texts_.Get(); }
    bool IsEmpty() const { return CFArrayGetCount(texts_.Get()) == 0; }

private:
    BasicSet<String, Less<String>> seen_;
    CFPointer<CFMutableArrayRef> texts_ = NewArray();
};

// The application's name and version: "Builder 4.2". A minor version without a major one means nothing. Empty when the
// entry names no application.
String CreatorOf(const Meta& entry) {
    String name, major, minor;
    for (const Meta::Attribute& attribute : entry.attributes) {
        if (Is(attribute.key, CFSTR("name"))) name = attribute.value;
        if (Is(attribute.key, CFSTR("versionMajor"))) major = attribute.value;
        if (Is(attribute.key, CFSTR("versionMinor"))) minor = attribute.value;
    }
    if (name.IsEmpty() || major.IsEmpty()) return name;
    name.Append(" ");
    name.Append(major);
    if (!minor.IsEmpty()) {
        name.Append(".");
        name.Append(minor);
    }
    return name;
}

String LanguageOf(const Meta& entry) {
    String language("en");
    for (const Meta::Attribute& attribute : entry.attributes) {
        if (Is(attribute.key, CFSTR("lang"))) language = attribute.value;
    }
    return language;
}

void WriteMeta(const BasicArray<Meta>& meta, CFMutableDictionaryRef attributes) {
    DistinctTexts keywords;
    DistinctTexts authors;
    const CFPointer<CFMutableDictionaryRef> descriptions = NewDictionary();
    for (const Meta& entry : meta) {
        if (Is(entry.name, CFSTR("Application"))) {
            const String creator = CreatorOf(entry);
            if (!creator.IsEmpty()) CFDictionaryAddValue(attributes, kMDItemCreator, Copied(creator).Get());
        } else if (Is(entry.name, CFSTR("Brand"))) {
            keywords.AddNamesOf(entry);
        } else if (Is(entry.name, CFSTR("Author"))) {
            authors.AddNamesOf(entry);
        } else if (Is(entry.name, CFSTR("Description"))) {
            CFDictionaryAddValue(descriptions.Get(), Copied(LanguageOf(entry)).Get(), Copied(entry.value).Get());
        }
    }
    if (CFDictionaryGetCount(descriptions.Get()) != 0) {
        CFDictionaryAddValue(attributes, kMDItemDescription, descriptions.Get());
    }
    if (!authors.IsEmpty()) CFDictionaryAddValue(attributes, kMDItemAuthors, authors.Texts());
    if (!keywords.IsEmpty()) CFDictionaryAddValue(attributes, kMDItemKeywords, keywords.Texts());
}

// The designs in use, each once, in the order of their decimal texts: 10 stands before 9.
std::vector<std::string> DesignTexts(const BasicArray<RefPointer<StorageScene2::Brick>>& bricks) {
    std::vector<std::uint32_t> designs;
    designs.reserve(bricks.Size());
    for (const RefPointer<StorageScene2::Brick>& brick : bricks) designs.push_back(brick->designID);
    std::sort(designs.begin(), designs.end());
    designs.erase(std::unique(designs.begin(), designs.end()), designs.end());

    std::vector<std::string> texts;
    texts.reserve(designs.size());
    for (const std::uint32_t design : designs) texts.push_back(std::to_string(design));
    std::sort(texts.begin(), texts.end());
    return texts;
}

void WriteBricks(const BasicArray<RefPointer<StorageScene2::Brick>>& bricks, CFMutableDictionaryRef attributes) {
    // There are no unsigned numbers on the platform; the larger signed type holds every count.
    const auto count = static_cast<std::int64_t>(bricks.Size());
    const CFPointer<CFNumberRef> number(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &count));
    CFDictionarySetValue(attributes, NumberOfBricksName(), number.Get());

    const CFPointer<CFMutableArrayRef> list = NewArray();
    for (const std::string& text : DesignTexts(bricks)) {
        const CFPointer<CFStringRef> design(
            CFStringCreateWithCString(kCFAllocatorDefault, text.c_str(), kCFStringEncodingASCII));
        CFArrayAppendValue(list.Get(), design.Get());
    }
    CFDictionarySetValue(attributes, ListOfBricksName(), list.Get());
}

}  // namespace

const std::array<CFStringRef, 7>& AttributeNames() {
    static const std::array<CFStringRef, 7> names = {kMDItemVersion,    kMDItemCreator,  kMDItemDescription,
                                                     kMDItemAuthors,    kMDItemKeywords, NumberOfBricksName(),
                                                     ListOfBricksName()};
    return names;
}

void WriteAttributes(const StorageScene2& scene, const Version& version, CFMutableDictionaryRef attributes) {
    String format;
    version.AppendTo(format);
    CFDictionaryAddValue(attributes, kMDItemVersion, Copied(format).Get());
    if (!scene.meta.Empty()) WriteMeta(scene.meta, attributes);
    WriteBricks(scene.bricks, attributes);
}

void HandOverAttributes(CFDictionaryRef written, CFMutableDictionaryRef attributes) {
    for (const CFStringRef name : AttributeNames()) {
        const void* const value = CFDictionaryGetValue(written, name);
        if (value == nullptr) continue;
        if (name == NumberOfBricksName() || name == ListOfBricksName()) {
            CFDictionarySetValue(attributes, name, value);
        } else {
            CFDictionaryAddValue(attributes, name, value);
        }
    }
}

}  // namespace ZEMA

#include "bench/Import.h"

#include <CoreFoundation/CoreFoundation.h>

#include <stdexcept>

#include "importer/MetadataImporterPlugin.h"

namespace bench {

void RunImport(const std::filesystem::path& document) {
    CFStringRef path = CFStringCreateWithCString(nullptr, document.c_str(), kCFStringEncodingUTF8);
    CFMutableDictionaryRef attributes =
        CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    const Boolean imported = GetMetadataForFile(nullptr, attributes, CFSTR("com.zema.wqf"), path);
    CFRelease(attributes);
    CFRelease(path);
    if (!imported) throw std::runtime_error("the document was not imported");
}

}  // namespace bench

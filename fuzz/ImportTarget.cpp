// The whole road of a document: what the plug-in makes of a file of these bytes.
#include <memory>

#include "fuzz/Fuzzing.h"
#include "importer/MetadataImporterPlugin.h"
#include "platform/Foundation/CFPointer.h"

namespace {

using Foundation::CFPointer;
using ZEMA::fuzzing::Folder;
using ZEMA::fuzzing::Require;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string document(ZEMA::fuzzing::TextOf(data, size));
    const CFPointer<CFStringRef> path(CFStringCreateWithCString(
        kCFAllocatorDefault, Folder().Write("document.wqf", document).c_str(), kCFStringEncodingUTF8));
    const CFPointer<CFMutableDictionaryRef> attributes(CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    const bool imported = GetMetadataForFile(nullptr, attributes.Get(), nullptr, path.Get()) != 0;
    Require(imported == (CFDictionaryGetCount(attributes.Get()) > 0), "attributes come with success, and only then");
    Require(document.empty() || Folder().Read("document.wqf") == document, "a document is not changed");
    return 0;
}

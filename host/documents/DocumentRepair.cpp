#include "host/documents/DocumentRepair.h"

#include <string>

#include "host/archive/ArchiveMend.h"
#include "host/archive/ForeignMethods.h"
#include "importer/AttributeSet.h"
#include "importer/DocumentLoad.h"
#include "platform/Foundation/CFPointer.h"
#include "platform/Foundation/NSAutoreleasePool.h"

namespace ZEMA {

namespace {

constexpr std::size_t kLargestModel = (std::size_t{1} << 31) - 1;  // that a loader takes

// False where there is nothing that a repair would put right, or where the model does not load all the same.
bool ImportMended(const std::string& path, DocumentRecord& record) {
    const Result<std::string> model = ReadMended(path, kModelName, kLargestModel);
    if (!model) return false;
    const Foundation::NSAutoreleasePool pool;
    DocumentLoad load;
    if (!load.RunText(AString(model->data(), static_cast<std::uint32_t>(model->size())))) return false;
    const Foundation::CFPointer<CFMutableDictionaryRef> attributes(CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    WriteAttributes(load.Scene(), load.MarkupVersion(), attributes.Get());
    record.attributes = AttributesOf(attributes.Get());
    return true;
}

}  // namespace

void PrepareRepair() {
    LoadForeignMethods();
}

DocumentRecord ImportRepaired(const PluginHost& host, const FoundDocument& document) {
    DocumentRecord record = ImportDocument(host, document);
    if (record.imported || document.failure) return record;
    try {
        if (!ImportMended(document.path, record)) return record;
        record.imported = true;
        record.repaired = true;
        record.passing = false;
        record.error.clear();
    } catch (...) {
        record.attributes.clear();
        record.error = ReasonOfException();
        record.passing = true;
    }
    return record;
}

}  // namespace ZEMA

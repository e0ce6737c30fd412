// A plug-in module with one factory for each thing that a host may find wrong.

#include <CoreServices/CoreServices.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace {

HRESULT KnowsNothing(void*, REFIID, void** result) {
    *result = nullptr;
    return E_NOINTERFACE;
}
HRESULT KnowsAll(void* instance, REFIID, void** result) {
    *result = instance;
    return S_OK;
}
ULONG Counts(void*) {
    return 1;
}
Boolean ImportsWhatNobodyKnows(void*, CFMutableDictionaryRef attributes, CFStringRef, CFStringRef path) {
    CFDictionaryAddValue(attributes, CFSTR("a"), path);
    CFDictionaryAddValue(attributes, CFSTR("kMDItemVersion"), CFSTR("5"));
    return true;
}

bool Has(CFStringRef path, const char* word) {
    char bytes[4096] = "";
    CFStringGetCString(path, bytes, sizeof bytes, kCFStringEncodingUTF8);
    return std::strstr(bytes, word) != nullptr;
}
Boolean ImportsWithTrouble(void*, CFMutableDictionaryRef attributes, CFStringRef, CFStringRef path) {
    if (Has(path, "crash")) std::abort();
    while (Has(path, "hang")) pause();
    CFDictionaryAddValue(attributes, CFSTR("kMDItemVersion"), CFSTR("5"));
    return true;
}

const MDImporterInterfaceStruct otherTable = {nullptr, KnowsNothing, Counts, Counts, ImportsWhatNobodyKnows};
const MDImporterInterfaceStruct leakingTable = {nullptr, KnowsAll, Counts, Counts, ImportsWhatNobodyKnows};
const MDImporterInterfaceStruct troubledTable = {nullptr, KnowsAll, Counts, Counts, ImportsWithTrouble};
const MDImporterInterfaceStruct* troubled = &troubledTable;
const MDImporterInterfaceStruct* other = &otherTable;
const MDImporterInterfaceStruct* leaking = &leakingTable;

}  // namespace

extern "C" __attribute__((visibility("default"))) void* MakesNothing(CFAllocatorRef, CFUUIDRef) {
    return nullptr;
}

extern "C" __attribute__((visibility("default"))) void* MakesNoImporter(CFAllocatorRef, CFUUIDRef) {
    return &other;
}

extern "C" __attribute__((visibility("default"))) void* LeavesAnInstance(CFAllocatorRef, CFUUIDRef) {
    const CFUUIDRef factory =
        CFUUIDCreateFromString(kCFAllocatorDefault, CFSTR("1A62A22C-F866-420C-AF47-37B71F698B92"));
    CFPlugInAddInstanceForFactory(factory);
    CFRelease(factory);
    return &leaking;
}

// Crashes or hangs at documents whose paths say so.
extern "C" __attribute__((visibility("default"))) void* MakesTrouble(CFAllocatorRef, CFUUIDRef) {
    return &troubled;
}

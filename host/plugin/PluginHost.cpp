#include "host/plugin/PluginHost.h"

#include <dlfcn.h>

#include <optional>

#include "host/system/FileDescriptor.h"
#include "platform/PlugInInstances.h"

namespace ZEMA {

namespace {

using Foundation::CFPointer;

using FactoryFunction = void* (*)(CFAllocatorRef allocator, CFUUIDRef typeID);

CFPointer<CFStringRef> StringOf(const std::string& utf8) {
    return CFPointer<CFStringRef>(CFStringCreateWithCString(kCFAllocatorDefault, utf8.c_str(), kCFStringEncodingUTF8));
}

CFPointer<CFUUIDRef> UUIDOf(const std::string& text) {
    return CFPointer<CFUUIDRef>(CFUUIDCreateFromString(kCFAllocatorDefault, StringOf(text).Get()));
}

}  // namespace

void PluginHost::ModuleCloser::operator()(void* module) const {
    dlclose(module);
}

void PluginHost::ImporterReleaser::operator()(MDImporterInterfaceStruct** importer) const {
    (*importer)->Release(importer);
}

Result<PluginHost> PluginHost::Load(const std::string& bundle) {
    Result<BundleInfo> info = ReadBundleInfo(bundle);
    if (!info) return info.Why();
    PluginHost host;
    host.info_ = std::move(*info);
    host.contentType_ = StringOf(host.info_.contentType);
    if (Failure failure = host.OpenModule()) return failure;
    if (Failure failure = host.FindImporter()) return failure;
    return host;
}

// Opening a pipe would wait, and the dynamic linker does not look first.
Failure PluginHost::OpenModule() {
    if (const auto file = OpenRegularFile(info_.module); !file) return file.Why().In(info_.module);
    module_.reset(dlopen(info_.module.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (!module_) return {FailureKind::Damaged, dlerror()};
    return {};
}

// The first factory that makes an importer counts; if none does, what was wrong with the last.
Failure PluginHost::FindImporter() {
    Failure failure;
    for (const PlugInFactory& factory : info_.factories) {
        failure = AskFactory(factory);
        if (!failure) break;
    }
    return failure;
}

Failure PluginHost::AskFactory(const PlugInFactory& factory) {
    auto* const function = reinterpret_cast<FactoryFunction>(dlsym(module_.get(), factory.function.c_str()));
    if (function == nullptr) return {FailureKind::Damaged, info_.module + ": exports no function " + factory.function};
    importer_ = ImporterOf(function(kCFAllocatorDefault, UUIDOf(factory.type).Get()));
    if (!importer_) {
        return {FailureKind::Damaged, info_.module + ": the factory makes no importer of the type " + factory.type};
    }
    factory_ = UUIDOf(factory.factory);
    return {};
}

// The factory's own reference to the instance is dropped either way.
PluginHost::Importer PluginHost::ImporterOf(void* instance) {
    if (instance == nullptr) return nullptr;
    auto** const unknown = static_cast<MDImporterInterfaceStruct**>(instance);
    void* importer = nullptr;
    const HRESULT result = (*unknown)->QueryInterface(unknown, CFUUIDGetUUIDBytes(kMDImporterInterfaceID), &importer);
    (*unknown)->Release(unknown);
    return Importer(SUCCEEDED(result) ? static_cast<MDImporterInterfaceStruct**>(importer) : nullptr);
}

bool PluginHost::Import(CFStringRef path, CFMutableDictionaryRef attributes) const {
    return (*importer_)->ImporterImportData(importer_.get(), attributes, contentType_.Get(), path) != 0;
}

Failure PluginHost::Close() {
    importer_.reset();
    const std::optional<CFIndex> left = PlugInInstanceCount(factory_.Get());
    // The code of an instance that is still alive must stay.
    if (left.value_or(0) != 0) {
        (void)module_.release();
        return {FailureKind::Damaged,
                info_.module + ": the plug-in left " + std::to_string(*left) + " instances behind"};
    }
    module_.reset();
    return {};
}

Result<PluginHost> LoadPlugin(const std::string& given) {
    const Result<std::string> bundle = FindBundle(given);
    if (!bundle) return bundle.Why();
    return PluginHost::Load(*bundle);
}

}  // namespace ZEMA

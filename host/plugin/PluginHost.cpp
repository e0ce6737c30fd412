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

// The importer interface of a new instance, or null. The factory's own reference is dropped either way.
MDImporterInterfaceStruct** ImporterOf(void* instance) {
    auto** const unknown = static_cast<MDImporterInterfaceStruct**>(instance);
    void* importer = nullptr;
    const HRESULT result = (*unknown)->QueryInterface(unknown, CFUUIDGetUUIDBytes(kMDImporterInterfaceID), &importer);
    (*unknown)->Release(unknown);
    return SUCCEEDED(result) ? static_cast<MDImporterInterfaceStruct**>(importer) : nullptr;
}

}  // namespace

void PluginHost::ModuleCloser::operator()(void* module) const {
    dlclose(module);
}

std::unique_ptr<PluginHost> PluginHost::Load(const std::string& bundle, std::string& problem) {
    std::optional<BundleInfo> info = ReadBundleInfo(bundle, problem);
    if (!info) return nullptr;
    std::unique_ptr<PluginHost> host(new PluginHost);
    host->info_ = std::move(*info);
    host->contentType_ = StringOf(host->info_.contentType);
    if (!host->OpenModule(problem) || !host->FindImporter(problem)) return nullptr;
    return host;
}

PluginHost::~PluginHost() {
    if (importer_ != nullptr) (*importer_)->Release(importer_);
}

bool PluginHost::OpenModule(std::string& problem) {
    if (const auto file = OpenRegularFile(info_.module); !file) {
        problem = file.Why().In(info_.module).text;
        return false;
    }
    module_.reset(dlopen(info_.module.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (!module_) problem = dlerror();
    return module_ != nullptr;
}

bool PluginHost::FindImporter(std::string& problem) {
    for (const PlugInFactory& factory : info_.factories) {
        if (AskFactory(factory, problem)) return true;
    }
    return false;
}

bool PluginHost::AskFactory(const PlugInFactory& factory, std::string& problem) {
    auto* const function = reinterpret_cast<FactoryFunction>(dlsym(module_.get(), factory.function.c_str()));
    if (function == nullptr) {
        problem = info_.module + ": exports no function " + factory.function;
        return false;
    }
    void* const instance = function(kCFAllocatorDefault, UUIDOf(factory.type).Get());
    importer_ = instance == nullptr ? nullptr : ImporterOf(instance);
    if (importer_ == nullptr) {
        problem = info_.module + ": the factory makes no importer of the type " + factory.type;
        return false;
    }
    factory_ = UUIDOf(factory.factory);
    return true;
}

bool PluginHost::Import(CFStringRef path, CFMutableDictionaryRef attributes) const {
    return (*importer_)->ImporterImportData(importer_, attributes, contentType_.Get(), path) != 0;
}

bool PluginHost::Close(std::string& problem) {
    (*importer_)->Release(importer_);
    importer_ = nullptr;
    const std::optional<CFIndex> left = PlugInInstanceCount(factory_.Get());
    // The code of an instance that is still alive must stay.
    if (left.value_or(0) != 0) {
        problem = info_.module + ": the plug-in left " + std::to_string(*left) + " instances behind";
        (void)module_.release();
        return false;
    }
    module_.reset();
    return true;
}

}  // namespace ZEMA

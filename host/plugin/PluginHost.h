// The side of the indexing service: loads a plug-in bundle and talks to one instance of its importer.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/CoreServices.h>

#include <memory>
#include <string>

#include "host/plugin/Bundle.h"
#include "platform/Foundation/CFPointer.h"

namespace ZEMA {

// An importer instance and the module that it lives in. Everything that identifies the plug-in comes from its
// Info.plist, and attributes come through its interface table alone.
//
// Ownership: one reference to the instance and one to the module, both gone after Close or with the host. Attribute
//            values belong to the platform layer and outlive the module.
// Threads:   one at a time.
class PluginHost {
public:
    // Loads the bundle in the folder `bundle`, asks its factories for an instance and that for the importer interface.
    // Null, with a `problem`, when any of that fails.
    static std::unique_ptr<PluginHost> Load(const std::string& bundle, std::string& problem);

    PluginHost(const PluginHost&) = delete;
    PluginHost& operator=(const PluginHost&) = delete;
    ~PluginHost();

    // What the importer answers for the document at an absolute path.
    bool Import(CFStringRef path, CFMutableDictionaryRef attributes) const;

    // Releases the instance and unloads the module. False, with a `problem`, when the plug-in still counts instances.
    [[nodiscard]] bool Close(std::string& problem);

    const BundleInfo& Info() const { return info_; }

private:
    struct ModuleCloser {
        void operator()(void* module) const;
    };
    using Module = std::unique_ptr<void, ModuleCloser>;

    PluginHost() = default;
    bool OpenModule(std::string& problem);
    bool FindImporter(std::string& problem);
    bool AskFactory(const PlugInFactory& factory, std::string& problem);

    BundleInfo info_;
    Module module_;
    MDImporterInterfaceStruct** importer_ = nullptr;  // one reference
    Foundation::CFPointer<CFUUIDRef> factory_;        // whose instance the importer is
    Foundation::CFPointer<CFStringRef> contentType_;
};

}  // namespace ZEMA

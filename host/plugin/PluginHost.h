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
    static Result<PluginHost> Load(const std::string& bundle);

    PluginHost(PluginHost&&) = default;

    // What the importer answers for the document at an absolute path.
    bool Import(CFStringRef path, CFMutableDictionaryRef attributes) const;

    // Releases the instance and unloads the module. Called last. It fails, and the module stays, when the plug-in still
    // counts instances.
    Failure Close();

    const BundleInfo& Info() const { return info_; }

private:
    // What ends a module or an instance that is let go.
    struct ModuleCloser {
        void operator()(void* module) const;
    };
    // Gives up the last reference of the host to its instance.
    struct ImporterReleaser {
        void operator()(MDImporterInterfaceStruct** importer) const;
    };
    using Module = std::unique_ptr<void, ModuleCloser>;
    using Importer = std::unique_ptr<MDImporterInterfaceStruct*, ImporterReleaser>;

    PluginHost() = default;
    Failure OpenModule();
    Failure FindImporter();
    Failure AskFactory(const PlugInFactory& factory);
    static Importer ImporterOf(void* instance);  // null where it is null or offers no such interface

    BundleInfo info_;
    Module module_;                             // before the importer, whose release runs its code
    Importer importer_;                         // one reference
    Foundation::CFPointer<CFUUIDRef> factory_;  // whose instance the importer is
    Foundation::CFPointer<CFStringRef> contentType_;
};

// The plug-in in the bundle that FindBundle finds.
Result<PluginHost> LoadPlugin(const std::string& given);

}  // namespace ZEMA

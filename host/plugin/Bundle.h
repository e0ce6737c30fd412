// A plug-in bundle: where it lies, and what it says of itself in its Info.plist.
#pragma once

#include <string>
#include <vector>

#include "host/system/Failure.h"

namespace ZEMA {

// The folder `given`, unless it is empty. Otherwise the one in lib/wqf beside the folder of this program. It is there.
Result<std::string> FindBundle(const std::string& given);

// One factory that a bundle offers for one plug-in type. Both UUIDs are texts of the form 8-4-4-4-12.
struct PlugInFactory {
    std::string type;
    std::string factory;
    std::string function;  // the name that the module exports
};

// What a host needs to know of a bundle before it loads its module.
struct BundleInfo {
    std::string module;                    // the path of the loadable module
    std::vector<PlugInFactory> factories;  // at least one, in the order of the property list
    std::string contentType;               // the first document type, or "public.data"
};

// Reads the bundle in the folder `bundle`. It is Damaged where something that a host needs is missing or wrong.
Result<BundleInfo> ReadBundleInfo(const std::string& bundle);

}  // namespace ZEMA

#include <CoreFoundation/CFPlugIn.h>

#include <map>
#include <mutex>

#include "platform/CoreFoundation/CFRuntime.h"
#include "platform/PlugInInstances.h"

namespace ZEMA {
namespace {

// Identifiers of equal value are one object, which its entry here keeps alive.
struct Instances {
    std::mutex mutex;
    std::map<CFUUIDRef, CFIndex> counts;  // guarded by mutex; factories without instances have no entry
};
Instances& TheInstances() {
    static Instances& instances = *new Instances;  // plug-ins may let go of their last instance at the very end
    return instances;
}

}  // namespace

std::optional<CFIndex> PlugInInstanceCount(CFUUIDRef factory) {
    Instances& instances = TheInstances();
    const std::scoped_lock lock(instances.mutex);
    const auto entry = instances.counts.find(factory);
    return entry == instances.counts.end() ? 0 : entry->second;
}

}  // namespace ZEMA

void CFPlugInAddInstanceForFactory(CFUUIDRef factory) {
    ZEMA::CF::Require(factory != nullptr);
    ZEMA::Instances& instances = ZEMA::TheInstances();
    const std::scoped_lock lock(instances.mutex);
    const auto [entry, isNew] = instances.counts.try_emplace(factory, 0);
    if (isNew) CFRetain(factory);
    ++entry->second;
}

// One too many is ignored: the factory has no entry then.
void CFPlugInRemoveInstanceForFactory(CFUUIDRef factory) {
    ZEMA::CF::Require(factory != nullptr);
    ZEMA::Instances& instances = ZEMA::TheInstances();
    const std::scoped_lock lock(instances.mutex);
    const auto entry = instances.counts.find(factory);
    if (entry == instances.counts.end() || --entry->second > 0) return;
    instances.counts.erase(entry);
    CFRelease(factory);
}

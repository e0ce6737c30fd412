#include "storage/local/OpenPathRegistry.h"

#include "core/BasicSet.h"

namespace ZEMA {
namespace {

// Of namespace scope, so that it is still there when the object registry lets go of the last directories at exit.
BasicMultiset<String, Less<String>> openPaths;

// How often it was cleared: an object from before must not take away the count of a later one at the same path.
std::uint32_t generation = 0;

}  // namespace

OpenPathRegistry::Entry::Entry(CFStringRef nativePath) : path_(nativePath), generation_(generation) {
    openPaths.Insert(path_);
}

OpenPathRegistry::Entry::~Entry() {
    if (generation_ == generation) openPaths.Erase(openPaths.Find(path_));
}

std::size_t OpenPathRegistry::Count(const String& nativePath) {
    return openPaths.Count(nativePath);
}

void OpenPathRegistry::Clear() {
    openPaths.Clear();
    ++generation;
}

}  // namespace ZEMA

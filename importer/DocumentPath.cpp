#include "importer/DocumentPath.h"

#include "platform/Foundation/CFPointer.h"
#include "platform/Foundation/NSFileManager.h"
#include "platform/Foundation/NSPathUtilities.h"

namespace ZEMA {

namespace {

using Foundation::CFPointer;
using Foundation::NSFileManager;

// Null unless a symbolic link stands at the path itself.
CFPointer<CFStringRef> LinkDestination(CFStringRef path) {
    const auto attributes = NSFileManager::defaultManager().attributesOfItemAtPath(path);
    if (!attributes || attributes->fileType != Foundation::NSFileTypeSymbolicLink) return {};
    return NSFileManager::defaultManager().destinationOfSymbolicLinkAtPath(path);
}

CFPointer<CFStringRef> FolderOf(CFStringRef path) {
    const CFPointer<CFArrayRef> components = Foundation::pathComponents(path);
    const CFIndex count = CFArrayGetCount(components.Get());
    const CFPointer<CFMutableArrayRef> parents(
        CFArrayCreateMutable(kCFAllocatorDefault, count, &kCFTypeArrayCallBacks));
    for (CFIndex i = 0; i + 1 < count; ++i) {
        CFArrayAppendValue(parents.Get(), CFArrayGetValueAtIndex(components.Get(), i));
    }
    return Foundation::pathWithComponents(parents.Get());
}

// The whole path of a link's destination, in which "~" is a name like any other. It is standardised like any other
// path, since the storage tree would resolve a ".." in it by the text alone, past the links on the way.
CFPointer<CFStringRef> FollowedFrom(CFStringRef link, CFStringRef destination) {
    if (CFStringGetCharacterAtIndex(destination, 0) == '/') return Foundation::stringByStandardizingPath(destination);
    const CFPointer<CFStringRef> whole = Foundation::stringByAppendingPathComponent(FolderOf(link).Get(), destination);
    return Foundation::stringByStandardizingPath(whole.Get());
}

void AppendComponents(CFStringRef path, BasicArray<String>& components) {
    const CFPointer<CFArrayRef> parts = Foundation::pathComponents(path);
    const CFIndex count = CFArrayGetCount(parts.Get());
    for (CFIndex i = 0; i < count; ++i) {
        components.PushBack(String(static_cast<CFStringRef>(CFArrayGetValueAtIndex(parts.Get(), i))));
    }
}

void AppendWholePath(CFStringRef path, BasicArray<String>& components) {
    if (!Foundation::isAbsolutePath(path)) {
        const CFPointer<CFStringRef> current = NSFileManager::defaultManager().currentDirectoryPath();
        if (current) AppendComponents(current.Get(), components);
    }
    AppendComponents(path, components);
}

String Joined(const BasicArray<String>& components) {
    String path;
    for (std::size_t i = 0; i < components.Size(); ++i) {
        if (i != 0) path.Append("/");
        path.Append(i == 0 && components[i] == String("/") ? String("file") : components[i]);
    }
    return path;
}

}  // namespace

String StoragePathOf(CFStringRef nativePath) {
    const CFPointer<CFStringRef> path = Foundation::stringByStandardizingPath(nativePath);
    const CFPointer<CFStringRef> destination = LinkDestination(path.Get());
    BasicArray<String> components;
    if (destination) {
        // The tree skips the empty components that the second root gives: file///folder/a.wqf is file/folder/a.wqf.
        components.PushBack("/");
        AppendWholePath(FollowedFrom(path.Get(), destination.Get()).Get(), components);
    } else {
        AppendWholePath(path.Get(), components);
    }
    return Joined(components);
}

}  // namespace ZEMA

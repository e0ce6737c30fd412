#include "importer/DocumentLoad.h"

#include <exception>
#include <new>
#include <typeinfo>

#include "core/Exception.h"
#include "loader/format4/ModelLoaderWQFML4.h"
#include "loader/format5/ModelLoaderWQFML5.h"
#include "platform/Foundation/CFPointer.h"
#include "platform/Foundation/NSFileManager.h"
#include "platform/Foundation/NSPathUtilities.h"
#include "storage/Directory.h"

namespace ZEMA {

namespace {

using Foundation::CFPointer;
using Foundation::NSFileManager;

// What another loader may be able to read.
constexpr std::uint32_t kWorthAnotherFormat = ModelLoader::Error::VersionKind | ModelLoader::Error::ParserKind;

// A packaged document opens as a directory, since its archive is mounted on the way; the model is a member of it. What
// opens as none is the model itself. `package` keeps the archive mounted.
Path ModelPathOf(const String& storagePath, const RefPointer<Directory>& package) {
    if (!package) return Path(storagePath);
    Path model(*package);
    model.Append(kModelName);
    return model;
}

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

DocumentLoad::DocumentLoad(std::uint32_t options, std::vector<LoadAttempt>* attempts)
    : options_(options), attempts_(attempts), scene_(New<StorageScene2>()) {}

bool DocumentLoad::Run(const String& storagePath) {
    const RefPointer<Directory> package = Path(storagePath).OpenDirectory(false);
    const Path model = ModelPathOf(storagePath, package);
    return LoadModel([&](ModelLoader& loader) { return loader.Load(model, scene_.Get(), options_); });
}

bool DocumentLoad::RunText(const AString& text) {
    return LoadModel([&](ModelLoader& loader) { return loader.Load(text, scene_.Get(), options_); });
}

bool DocumentLoad::LoadModel(const Source& load) {
    RefPointer<ModelLoader> loader = New<ModelLoaderWQFML5>(nullptr);
    if (Try(*loader, Version(5), load)) return true;
    if ((loader->errorMask & kWorthAnotherFormat) == 0) return false;
    loader = nullptr;  // what it still holds of the document goes before the document is read again
    loader = New<ModelLoaderWQFML4>();
    return Try(*loader, Version(4), load);
}

bool DocumentLoad::Try(ModelLoader& loader, const Version& format, const Source& load) {
    if (attempts_ != nullptr) {
        attempts_->emplace_back();
        attempts_->back().format = format.components[0];
    }
    bool loaded = false;
    try {
        loaded = load(loader);
        if (attempts_ != nullptr) Record(loader, loaded);
    } catch (...) {
        if (attempts_ != nullptr) {
            attempts_->back().reason = ReasonOfException();
            Record(loader, false);
        }
        throw;
    }
    if (loaded) version_ = format;
    return loaded;
}

void DocumentLoad::Record(const ModelLoader& loader, bool loaded) {
    LoadAttempt& attempt = attempts_->back();
    attempt.loaded = loaded;
    attempt.errorMask = loader.errorMask;
    attempt.firstErrorKind = loader.errors.Empty() ? 0 : loader.errors[0]->kind;
    attempt.errors.clear();  // an earlier try may have run out of memory half way
    attempt.errors.reserve(loader.errors.Size());
    for (const RefPointer<ModelLoader::Error>& error : loader.errors) {
        String text;
        error->Describe(text);
        attempt.errors.emplace_back(text.ToAString().View());
    }
}

std::string ReasonOfException() {
    try {
        throw;
    } catch (const RangeException*) {
        return "a text in it is too long";
    } catch (const std::bad_alloc& error) {
        // A limit ends a load in the same way as memory does, but has words of its own.
        return typeid(error) == typeid(std::bad_alloc) ? "out of memory" : error.what();
    } catch (const std::exception& error) {
        return error.what();
    } catch (...) {
        return "an unknown exception";
    }
}

}  // namespace ZEMA

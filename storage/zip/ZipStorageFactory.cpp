#include "storage/zip/ZipStorageFactory.h"

#include "storage/Path.h"
#include "storage/zip/ZipStorageDirectory.h"
#include "storage/zip/ZipStorageVolume.h"

namespace ZEMA {

namespace {

const char kExtension[] = ".zip";
constexpr std::uint32_t kExtensionLength = sizeof kExtension - 1;

// Opens the archive file for changes, or else for reading. `style` receives how.
RefPointer<File> OpenArchive(const Path& path, bool create, bool onlyReads, AccessStyle& style) {
    style = kReadWriteStyle;
    RefPointer<File> file = onlyReads ? nullptr : path.OpenFile(&style, create);
    if (file || create) return file;
    style = kReadStyle;
    return path.OpenFile(&style, create);
}

// Without ".zip" at its end; a name that is nothing else stays.
String NameWithoutExtension(const String& name) {
    const std::uint32_t length = name.Length();
    if (length <= kExtensionLength) return name;
    const std::uint32_t start = length - kExtensionLength;
    if (!name.EqualsNoCaseAt(start, kExtensionLength, kExtension)) return name;
    return String(name, 0, start);
}

// Enters the volume under both names. A new object of count 0.
Directory* MountVolume(ZipStorageVolume& volume, const String& name) {
    auto* root = new ZipStorageDirectory(name, volume.Archive().Parent(), &volume, &volume.RootNode());
    try {
        String alias = name;
        alias.Append(kExtension);
        AddAlias(*root, alias);
    } catch (...) {
        const RefPointer<Directory> dropped(root);
        throw;
    }
    volume.SetRootDirectory(root);
    return root;
}

}  // namespace

ZipStorageFactory::ZipStorageFactory(bool onlyReads)
    : SpecificObjectFactory(FactoryRank::Selective), onlyReads_(onlyReads) {}

ZipStorageFactory::~ZipStorageFactory() = default;

Object* ZipStorageFactory::Create(ObjectFactoryArgs* args) {
    const auto* open = dynamic_cast<const Directory::OpenArgs*>(args);
    if (open == nullptr || !open->base || open->components.Empty()) return nullptr;
    Path path(*open);
    const String name = path.Name();
    if (!open->create && !path.IsFile()) path.AppendToName(kExtension);

    AccessStyle style;
    const RefPointer<File> archive = OpenArchive(path, open->create, onlyReads_, style);
    if (!archive) return nullptr;
    const RefPointer<ZipStorageVolume> volume = New<ZipStorageVolume>(archive.Get(), style);
    if (!volume->Open()) return nullptr;
    return MountVolume(*volume, NameWithoutExtension(name));
}

bool ZipStorageFactory::Attach() {
    return true;
}

void ZipStorageFactory::Detach() {}

}  // namespace ZEMA

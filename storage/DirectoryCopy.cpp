// The generic copy: of a file, or of a directory with everything below it.
#include <algorithm>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "storage/Directory.h"
#include "storage/PathOperations.h"
#include "storage/StorageMutex.h"

namespace ZEMA {
namespace {

constexpr std::uint64_t kChunkSize = 0x100000;

bool EqualNoCase(const String& a, const String& b) {
    return a.EqualsNoCaseAt(0, npos, b);
}

std::size_t DepthOf(const DirectoryElement& element) {
    std::size_t depth = 0;
    for (const Directory* up = element.Parent(); up != nullptr; up = up->Parent()) ++depth;
    return depth;
}

// Two objects may stand for one place. Their paths tell, as far as no link of the local file system leads there too.
bool IsSamePlace(const DirectoryElement* a, const DirectoryElement* b) {
    while (a != b) {
        if (a == nullptr || b == nullptr || !EqualNoCase(a->Name(), b->Name())) return false;
        a = a->Parent();
        b = b->Parent();
        if (a == nullptr && b == nullptr) return false;  // the tops of two trees
    }
    return true;
}

bool IsInside(const Directory& inner, const Directory& outer) {
    const Directory* place = &inner;
    for (std::size_t depth = DepthOf(inner), limit = DepthOf(outer); depth > limit; --depth) place = place->Parent();
    return IsSamePlace(place, &outer);
}

// Whether `path` below `directory` leads to just this file.
bool LeadsTo(Directory& directory, const String& path, const File& file) {
    BasicArray<String> components;
    SplitPath(path, components);
    NormalizeComponents(components);
    if (components.Empty() || !EqualNoCase(components.Back(), file.Name())) return false;
    components.PopBack();
    const RefPointer<Directory> parent = OpenDirectory(directory, components, false);
    return parent && IsSamePlace(parent.Get(), file.Parent());
}

bool CopyContents(File& source, File& destination, std::uint64_t size) {
    const std::uint64_t chunk = std::min(size, kChunkSize);
    const std::unique_ptr<unsigned char[]> buffer(new (std::nothrow) unsigned char[chunk]);
    if (!buffer) return false;
    for (std::uint64_t offset = 0; offset < size;) {
        const std::uint64_t count = std::min(size - offset, chunk);
        if (!ReadAt(source, offset, count, buffer.get()) || !WriteAt(destination, offset, count, buffer.get())) {
            return false;
        }
        offset += count;
    }
    return true;
}

template <class Element>
bool CopyAttributes(Element& source, Element& destination) {
    const ElementFlags flags = source.GetFlags();
    const ElementTimes times = source.GetTimes();
    return destination.SetAttributes(&flags, &times);
}

// One copy with all that it leads to. Stops at the first failure. The directories that are being copied stand in a list
// of their own rather than on the stack, since the storage decides how deep they go.
class TreeCopy {
public:
    TreeCopy(bool overwrite, bool force) : overwrite_(overwrite), force_(force) {}

    bool Run(Directory& source, const String& name, Directory& target, const String& newName) {
        if (!Begin(source, name, target, newName)) return false;
        while (!levels_.empty()) {
            if (!Step()) return false;
        }
        return true;
    }

private:
    // A directory on the way down, and the one that is made of it.
    struct Level {
        RefPointer<Directory> source;
        RefPointer<Directory> destination;
        Listing entries;  // still to be copied
    };

    // Copies a file, or begins a directory.
    bool Begin(Directory& source, const String& name, Directory& target, const String& newName) {
        const RefPointer<File> file = OpenFile(source, name, &kReadStyle, false, nullptr);
        return file ? CopyFile(*file, target, newName) : BeginDirectory(source, name, target, newName);
    }

    bool BeginDirectory(Directory& source, const String& name, Directory& target, const String& newName) {
        Level level;
        level.source = OpenDirectory(source, name, false);
        if (!level.source || (IsTop() && IsInside(target, *level.source))) return false;
        level.destination = OpenDirectory(target, newName, true);
        if (!level.destination || (IsTop() && IsInside(*level.destination, *level.source))) return false;

        // False is also the answer of an empty local directory; one that cannot be read calls itself empty.
        const bool listed = List(*level.source, String("*"), &level.entries);
        if (!listed && level.entries.Empty() && level.source->IsEmpty()) return false;
        levels_.push_back(std::move(level));
        return true;
    }

    // One entry of the deepest directory, or its attributes when none is left.
    bool Step() {
        Level& level = levels_.back();
        if (level.entries.Empty()) {
            const bool done = CopyAttributes(*level.source, *level.destination);
            levels_.pop_back();
            return done;
        }
        const String name = level.entries.begin()->name;
        level.entries.Erase(level.entries.begin());
        // The level moves when another is put behind it.
        const RefPointer<Directory> source = level.source;
        const RefPointer<Directory> destination = level.destination;
        return IsPlainName(name) && Begin(*source, name, *destination, name);
    }

    bool CopyFile(File& source, Directory& target, const String& newName) {
        if (IsTop() && LeadsTo(target, newName, source)) return false;
        if (!overwrite_ && IsFile(target, newName)) return false;
        const std::uint64_t size = GetSize(source);
        const RefPointer<File> destination = OpenDestination(target, newName, size);
        return destination && CopyContents(source, *destination, size) && CopyAttributes(source, *destination);
    }

    RefPointer<File> OpenDestination(Directory& target, const String& newName, std::uint64_t size) {
        const auto open = [&] { return OpenFile(target, newName, &kReadWriteShareReadStyle, true, &size); };
        RefPointer<File> file = open();
        if (file || !force_ || !IsFile(target, newName)) return file;

        ElementFlags flags;
        if (!GetChildFlags(target, newName, &flags) || flags.Has(ElementFlags::kWritable)) return nullptr;
        flags.Set(ElementFlags::kWritable, true);
        if (!SetChildFlags(target, newName, &flags)) return nullptr;
        file = open();
        if (!file) {
            flags.Set(ElementFlags::kWritable, false);
            SetChildFlags(target, newName, &flags);
        }
        return file;
    }

    // Below the top the two trees go on side by side: they can meet nowhere if they did not meet there.
    bool IsTop() const { return levels_.empty(); }

    bool overwrite_;
    bool force_;
    std::vector<Level> levels_;
};

}  // namespace

bool Directory::Copy(const String& name, Directory* target, const String& newName, bool overwrite, bool force) {
    const StorageLock lock;
    return TreeCopy(overwrite, force).Run(*this, name, *target, newName);
}

}  // namespace ZEMA

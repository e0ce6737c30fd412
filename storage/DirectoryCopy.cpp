// The generic copy: of a file, or of a directory with everything below it.
#include <algorithm>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "storage/Directory.h"
#include "storage/ElementFacts.h"
#include "storage/PathOperations.h"
#include "storage/StorageMutex.h"

namespace ZEMA {
namespace {

constexpr std::uint64_t kChunkSize = 0x100000;

bool EqualNoCase(const String& a, const String& b) {
    return a.EqualsNoCaseAt(0, npos, b);
}

// Whether `path` below `directory` leads to just this file. Where the storage cannot tell, paths may.
bool LeadsTo(Directory& directory, const String& path, const File& file, bool comparePaths) {
    BasicArray<String> components;
    SplitPath(path, components);
    NormalizeComponents(components);
    if (components.Empty()) return false;
    const String name = components.Back();
    components.PopBack();
    const RefPointer<Directory> parent = OpenDirectory(directory, components, false);
    if (!parent || file.Parent() == nullptr) return false;

    auto* const facts = dynamic_cast<ElementFacts*>(parent.Get());
    auto* const ownFacts = dynamic_cast<ElementFacts*>(file.Parent());
    ElementIdentity own;
    if (facts != nullptr && ownFacts != nullptr && ownFacts->GetIdentity(file.Name(), &own)) {
        ElementIdentity other;
        return facts->GetIdentity(name, &other) && other == own;
    }
    return comparePaths && EqualNoCase(name, file.Name()) && Place(*parent).Is(Place(*file.Parent()));
}

// Opens or makes the copy's directory. The tree takes names that differ only in case for one, so an open source of such
// a name would be found in place of the copy; where the storage tells them apart the copy gets an object of its own.
RefPointer<Directory> OpenCopy(Directory& target, const String& name, const Directory& source) {
    RefPointer<Directory> found = OpenDirectory(target, name, true);
    auto* const facts = dynamic_cast<ElementFacts*>(&target);
    if (found.Get() != &source || facts == nullptr || !IsPlainName(name)) return found;
    ElementIdentity own;
    ElementIdentity other;
    if (!facts->GetIdentity(source.Name(), &own)) return found;
    const bool exists = facts->GetIdentity(name, &other);
    if (exists ? other == own : !target.CreateDirectory(name)) return found;
    return target.CreateChildObject(name);
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
        bool hasIdentity = false;
        ElementIdentity identity;  // of the source
        Listing entries;           // still to be copied
    };

    // Copies a file, or begins a directory.
    bool Begin(Directory& source, const String& name, Directory& target, const String& newName) {
        const RefPointer<File> file = OpenFile(source, name, &kReadStyle, false, nullptr);
        return file ? CopyFile(*file, target, newName) : BeginDirectory(source, name, target, newName);
    }

    bool BeginDirectory(Directory& source, const String& name, Directory& target, const String& newName) {
        Level level;
        level.source = OpenDirectory(source, name, false);
        if (!level.source || Meets(*level.source, target)) return false;
        level.destination = OpenCopy(target, newName, *level.source);
        if (!level.destination || Meets(*level.source, *level.destination)) return false;
        level.hasIdentity = GetIdentity(*level.source, &level.identity);

        // False is also the answer of an empty local directory; one that cannot be read calls itself empty.
        if (!List(*level.source, String("*"), &level.entries) && level.source->IsEmpty()) return false;
        levels_.push_back(std::move(level));
        return true;
    }

    // Whether copying the directory would come back to what is being copied. Below the top the two trees go on side by
    // side, so that they can meet through links alone: of the source, back up or into the copy; of the destination.
    bool Meets(Directory& source, Directory& destination) const {
        if (IsTop()) return Place(destination).IsInside(Place(source));
        ElementIdentity own;
        if (!GetIdentity(source, &own)) return false;
        const BasicArray<ElementIdentity> enclosing = Place(destination).Enclosing();
        const auto encloses = [&](const ElementIdentity& identity) {
            return std::find(enclosing.begin(), enclosing.end(), identity) != enclosing.end();
        };
        return encloses(own) || std::any_of(levels_.begin(), levels_.end(), [&](const Level& level) {
                   return level.hasIdentity && (level.identity == own || encloses(level.identity));
               });
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
        if (LeadsTo(target, newName, source, IsTop())) return false;
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

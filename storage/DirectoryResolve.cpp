// Following a path from directory to directory: through those that are open, through the storage, into archives.
#include <typeinfo>
#include <utility>

#include "registry/ObjectFactory.h"
#include "storage/PathOperations.h"
#include "storage/Resolution.h"
#include "storage/StorageMutex.h"

namespace ZEMA {
namespace {

// A factory that is asked for n components may follow n - 1 of them, which asks it for n - 1: a path of many missing
// components nests as deep. From this depth on the shorter paths come first, and each finds those before it answered.
constexpr int kNestingLimit = 64;

BasicArray<String> Slice(const BasicArray<String>& components, std::size_t begin, std::size_t end) {
    BasicArray<String> slice;
    slice.Reserve(end - begin);
    for (std::size_t index = begin; index < end; ++index) slice.PushBack(components[index]);
    return slice;
}

// The local file system takes an empty component for the directory itself, as in "a//b".
bool IsNameOfItself(Directory& directory, const String& component) {
    return component.IsEmpty() && RefPointer<Directory>(directory.CreateChildObject(component)).Get() == &directory;
}

RefPointer<Directory> AskFactories(Directory& base, BasicArray<String> components) {
    const RefPointer<ObjectFactory> factory = ObjectFactory::Instance();
    if (!factory) return nullptr;
    Directory::OpenArgs args;
    args.base = &base;
    args.components.Swap(components);
    const RefPointer<Object> answer = factory->Create(&typeid(Directory), &args);
    return dynamic_cast<Directory*>(answer.Get());
}

// Asks for all the components, then for fewer and fewer of them. Gives how many of them lead to the root of a volume,
// and that root in place of `base`; 0 when nobody answers.
std::size_t Mount(RefPointer<Directory>& base, const BasicArray<String>& components, ResolutionMemo& memo) {
    BasicArray<std::size_t> questions;
    memo.GetQuestions(*base, components, questions);
    for (std::size_t count = components.Size(); count > 0; --count) {
        RefPointer<Directory> volume =
            memo.Answer(questions[count - 1], [&] { return AskFactories(*base, Slice(components, 0, count)); });
        if (!volume) continue;
        base = std::move(volume);
        return count;
    }
    return 0;
}

// What HasDirectoryPath has just found.
RefPointer<Directory> OpenChildren(RefPointer<Directory> directory, const BasicArray<String>& components) {
    for (const String& component : components) {
        directory = RefPointer<Directory>(directory->CreateChildObject(component));
        if (!directory) break;
    }
    return directory;
}

RefPointer<Directory> Follow(RefPointer<Directory> directory, BasicArray<String> rest, ResolutionMemo& memo) {
    while (!rest.Empty()) {
        if (directory->HasDirectoryPath(rest)) return OpenChildren(std::move(directory), rest);
        const std::size_t count = Mount(directory, rest, memo);
        if (count == 0) return nullptr;
        rest = Slice(rest, count, rest.Size());
    }
    return directory;
}

// Makes what is missing, below the deepest directory that the path leads to. Archives that the failed attempt mounted
// are let go of first: one that hides behind a directory's name ("a.zip" behind "a") must not take the new entries.
RefPointer<Directory> MakeMissing(RefPointer<Directory> directory, const BasicArray<String>& rest,
                                  ResolutionMemo& memo) {
    memo.ForgetAnswers(*directory);
    std::size_t index = 0;
    for (; index < rest.Size(); ++index) {
        RefPointer<Directory> child = OpenDirectory(*directory, Slice(rest, index, index + 1), false);
        if (!child) break;
        directory = std::move(child);
    }
    for (; directory && index < rest.Size(); ++index) {
        if (IsNameOfItself(*directory, rest[index])) continue;
        if (!directory->CreateDirectory(rest[index])) return nullptr;
        memo.ForgetRefusals();
        directory = RefPointer<Directory>(directory->CreateChildObject(rest[index]));
    }
    return directory;
}

}  // namespace

RefPointer<Directory> FindOpenDirectory(Directory& directory, BasicArray<String>& components) {
    const StorageLock lock;
    RefPointer<Directory> found(&directory);
    std::size_t followed = 0;
    for (; found && followed < components.Size(); ++followed) {
        const String& component = components[followed];
        if (IsParentName(component)) {
            found = RefPointer<Directory>(found->Parent());
            continue;
        }
        const Directory::OpenChildren& openChildren = found->GetOpenChildren();
        const auto position = openChildren.Find(component);
        if (position != openChildren.end() && position->second != nullptr) {
            found = RefPointer<Directory>(position->second);
        } else if (!IsNameOfItself(*found, component)) {
            break;
        }
    }
    if (followed > 0) components = Slice(components, followed, components.Size());
    return found;
}

RefPointer<Directory> OpenDirectory(Directory& directory, const BasicArray<String>& components, bool create) {
    const StorageLock lock;
    Resolution resolution;
    BasicArray<String> rest = components;
    NormalizeComponents(rest);
    const RefPointer<Directory> found = FindOpenDirectory(directory, rest);
    if (!found) return nullptr;

    ResolutionMemo& memo = resolution.Memo();
    if (resolution.Nesting() == kNestingLimit) {
        for (std::size_t count = 1; count < rest.Size(); ++count) Follow(found, Slice(rest, 0, count), memo);
    }
    if (!create) return Follow(found, std::move(rest), memo);
    if (RefPointer<Directory> reached = Follow(found, rest, memo)) return reached;
    return MakeMissing(found, rest, memo);
}

}  // namespace ZEMA

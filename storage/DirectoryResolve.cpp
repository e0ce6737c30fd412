// Following a path from directory to directory: through those that are open, through the storage, into archives.
#include <algorithm>
#include <memory>
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

// Goes on from `found` through what is open, and tells how far. Null when ".." leads above the top.
std::size_t WalkOpen(RefPointer<Directory>& found, const BasicArray<String>& components, std::size_t count) {
    std::size_t followed = 0;
    for (; found && followed < count; ++followed) {
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
    return followed;
}

// One path below one directory, none of it open, and what was learnt of its beginnings. A factory that is asked for all
// of it follows the path without its last component, which asks the factories for that, and so on down: were each
// beginning a path of its own, to be copied and followed anew, the work would grow with the square of the length.
class PathBelow {
public:
    PathBelow(RefPointer<Directory> base, BasicArray<String> components, ResolutionMemo& memo)
        : base_(std::move(base)),
          components_(std::move(components)),
          memo_(memo),
          creations_(memo.Creations()),
          missingFrom_(components_.Size() + 1) {}
    PathBelow(const PathBelow&) = delete;
    PathBelow& operator=(const PathBelow&) = delete;

    // Where the first `count` components lead. `nesting` tells how many resolutions stand.
    RefPointer<Directory> Follow(std::size_t count, int nesting);

    // The same, first through what is open by now.
    RefPointer<Directory> FollowThroughOpen(std::size_t count, int nesting);

private:
    RefPointer<Directory> FollowBeginning(std::size_t count);
    std::shared_ptr<PathBelow> Rest(const RefPointer<Directory>& directory, std::size_t followed);
    RefPointer<Directory> OpenChildren(std::size_t count);
    bool Exists(std::size_t count);
    std::size_t Mount(std::size_t most, RefPointer<Directory>& volume);
    RefPointer<Directory> Ask(std::size_t count);
    void ForgetAfterCreation();

    RefPointer<Directory> base_;
    BasicArray<String> components_;
    ResolutionMemo& memo_;
    BasicArray<std::size_t> questions_;  // one for each beginning, from the first use on
    BasicArray<String> lastAsked_;       // the next question differs from it in a few components at the end

    std::uint64_t creations_;          // how many there were when the following was learnt:
    std::size_t missingFrom_;          // beginnings of so many components and more are no directories of the storage
    std::size_t refusedAbove_ = 0;     // beginnings of more components than this,
    std::size_t refusedTo_ = 0;        // and of at most so many, are no volumes
    std::shared_ptr<PathBelow> rest_;  // the one behind a volume, of which there seldom is another
};

// The question that is being asked of the factories.
struct Question {
    Question(const Directory::OpenArgs& args, PathBelow& path);
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;
    ~Question();

    const Directory::OpenArgs& args;
    PathBelow& path;
    const Question* outer;
};

const Question* innermost = nullptr;  // guarded by StorageMutex

Question::Question(const Directory::OpenArgs& asked, PathBelow& of) : args(asked), path(of), outer(innermost) {
    innermost = this;
}

Question::~Question() {
    innermost = outer;
}

RefPointer<Directory> PathBelow::Follow(std::size_t count, int nesting) {
    if (nesting == kNestingLimit) {
        for (std::size_t shorter = 1; shorter < count; ++shorter) FollowBeginning(shorter);
    }
    return FollowBeginning(count);
}

RefPointer<Directory> PathBelow::FollowBeginning(std::size_t count) {
    if (count == 0) return base_;
    if (Exists(count)) return OpenChildren(count);
    RefPointer<Directory> volume;
    const std::size_t mounted = Mount(count, volume);
    if (mounted == 0 || mounted == count) return volume;
    return Rest(volume, mounted)->FollowBeginning(count - mounted);
}

RefPointer<Directory> PathBelow::FollowThroughOpen(std::size_t count, int nesting) {
    RefPointer<Directory> found = base_;
    const std::size_t followed = WalkOpen(found, components_, count);
    if (followed == 0) return Follow(count, nesting);
    return followed == count ? found : Rest(found, followed)->Follow(count - followed, nesting);
}

// Kept alive by the caller too: another may take its place while it is followed.
std::shared_ptr<PathBelow> PathBelow::Rest(const RefPointer<Directory>& directory, std::size_t followed) {
    if (!rest_ || rest_->base_ != directory || rest_->components_.Size() != components_.Size() - followed) {
        rest_ = std::make_shared<PathBelow>(directory, Slice(components_, followed, components_.Size()), memo_);
    }
    return rest_;
}

RefPointer<Directory> PathBelow::OpenChildren(std::size_t count) {
    RefPointer<Directory> directory = base_;
    for (std::size_t index = 0; directory && index < count; ++index) {
        directory = RefPointer<Directory>(directory->CreateChildObject(components_[index]));
    }
    return directory;
}

// What lies below something missing is missing too, so the shortest such beginning is searched for once.
bool PathBelow::Exists(std::size_t count) {
    ForgetAfterCreation();
    if (count >= missingFrom_) return false;
    if (base_->HasDirectoryPath(Slice(components_, 0, count))) return true;
    missingFrom_ = count;
    for (std::size_t existing = 0; missingFrom_ - existing > 1;) {
        const std::size_t middle = existing + (missingFrom_ - existing) / 2;
        (base_->HasDirectoryPath(Slice(components_, 0, middle)) ? existing : missingFrom_) = middle;
    }
    return false;
}

// Asks for the first `most` components, then for fewer and fewer of them. Gives how many of them lead to the root of a
// volume, and that root; 0 when nobody answers.
std::size_t PathBelow::Mount(std::size_t most, RefPointer<Directory>& volume) {
    if (questions_.Empty()) memo_.GetQuestions(*base_, components_, questions_);
    ForgetAfterCreation();
    const std::uint64_t creations = creations_;
    bool refused = true;
    std::size_t count = most;
    while (count > 0) {
        if (count > refusedAbove_ && count <= refusedTo_) {
            count = refusedAbove_;
            continue;
        }
        const std::size_t question = questions_[count - 1];
        volume = memo_.Answer(question, [&] { return Ask(count); });
        if (volume) break;
        refused = refused && memo_.IsRefused(question);  // and not being asked just now
        ForgetAfterCreation();
        --count;
    }
    if (refused && most > count && creations == memo_.Creations()) {
        refusedTo_ = count == refusedAbove_ ? std::max(refusedTo_, most) : most;
        refusedAbove_ = count;
    }
    return count;
}

RefPointer<Directory> PathBelow::Ask(std::size_t count) {
    const RefPointer<ObjectFactory> factory = ObjectFactory::Instance();
    if (!factory) return nullptr;
    Directory::OpenArgs args;
    args.base = base_;
    args.components.Swap(lastAsked_);
    while (args.components.Size() > count) args.components.PopBack();
    while (args.components.Size() < count) args.components.PushBack(components_[args.components.Size()]);
    RefPointer<Object> answer;
    {
        const Question question(args, *this);
        answer = factory->Create(&typeid(Directory), &args);
    }
    args.components.Swap(lastAsked_);
    return dynamic_cast<Directory*>(answer.Get());
}

void PathBelow::ForgetAfterCreation() {
    if (creations_ == memo_.Creations()) return;
    creations_ = memo_.Creations();
    missingFrom_ = components_.Size() + 1;
    refusedAbove_ = 0;
    refusedTo_ = 0;
    rest_ = nullptr;
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
    const std::size_t followed = WalkOpen(found, components, components.Size());
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

    if (rest.Empty()) return found;

    ResolutionMemo& memo = resolution.Memo();
    RefPointer<Directory> reached = PathBelow(found, rest, memo).Follow(rest.Size(), resolution.Nesting());
    if (reached || !create) return reached;
    return MakeMissing(found, rest, memo);
}

RefPointer<Directory> OpenAskedParent(const Directory::OpenArgs& args) {
    const StorageLock lock;
    const std::size_t count = args.components.Size() - 1;
    if (innermost == nullptr || &innermost->args != &args) {
        return OpenDirectory(*args.base, Slice(args.components, 0, count), false);
    }
    const Resolution resolution;
    return innermost->path.FollowThroughOpen(count, resolution.Nesting());
}

}  // namespace ZEMA

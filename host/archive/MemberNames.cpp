#include "host/archive/MemberNames.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "host/archive/StorageTree.h"

namespace ZEMA {

namespace {

using Order = ZipStorageVolume::DirectoryOrder;

// The first parts of a name, as many as `depth`.
std::string_view Cut(std::string_view name, std::size_t depth) {
    std::size_t end = 0;
    for (; depth > 0 && end != std::string_view::npos; --depth) end = name.find('/', end == 0 ? 0 : end + 1);
    return name.substr(0, end);
}

// Whether a stored name is that path, or lies below it, without regard to case.
bool LiesAt(std::string_view name, const BasicArray<String>& path) {
    for (const String& part : path) {
        const std::string_view first = name.substr(0, name.find('/'));
        const std::optional<String> text = MemberName(std::string(first));
        if (!text || text->LessNoCase(part) || part.LessNoCase(*text)) return false;
        name.remove_prefix(std::min(first.size() + 1, name.size()));
    }
    return true;
}

// Whether more of the name, if only the "/" of a folder, follows its first parts.
bool LiesBelow(std::string_view name, std::size_t depth) {
    return Cut(name, depth).size() < name.size();
}

bool IsSpelled(std::string_view name, std::string_view spelling) {
    return spelling.empty() ||
           (name.starts_with(spelling) && (name.size() == spelling.size() || name[spelling.size()] == '/'));
}

}  // namespace

MemberNames::MemberNames(ArchiveRecords::Pointer records, const ZipStorageVolume& volume)
    : records_(std::move(records)), volume_(volume), byName_(records_->Count()) {
    names_.reserve(records_->Count());
    for (std::size_t number = 0; number < records_->Count(); ++number) names_.push_back(records_->Entry(number).name);
    std::iota(byName_.begin(), byName_.end(), 0u);
    std::stable_sort(byName_.begin(), byName_.end(),
                     [this](std::uint32_t a, std::uint32_t b) { return names_[a] < names_[b]; });
    for (const ZipFileHeader* member = volume.MembersInDirectoryOrder().First(); member != nullptr;
         member = Order::Next(member)) {
        members_.push_back(member);
    }
    FindHidden();
}

void MemberNames::FindHidden() {
    std::vector<bool> seen(names_.size());
    const std::vector<const ZipFileHeader*> named = MembersBelow(volume_.RootNode());
    if (named.size() == names_.size()) return;
    for (const ZipFileHeader* member : named) seen[NumberOf(*member)] = true;
    for (std::uint32_t number = 0; number < names_.size(); ++number) {
        if (seen[number]) continue;
        const ZipTreeNode* node = &volume_.RootNode();
        std::string_view name = names_[number];
        const bool isFolder = name.ends_with('/');
        while (isFolder && node != nullptr && !name.empty()) {
            const std::optional<String> part = MemberName(std::string(name.substr(0, name.find('/'))));
            name.remove_prefix(name.find('/') + 1);
            node = part ? node->FindChild(*part) : nullptr;
        }
        if (!isFolder || node == nullptr) hidden_.push_back(number);
    }
}

std::uint32_t MemberNames::NumberOf(const ZipFileHeader& member) const {
    const auto found = std::lower_bound(members_.begin(), members_.end(), member.centralHeaderOffset,
                                        [](const ZipFileHeader* a, auto b) { return a->centralHeaderOffset < b; });
    return static_cast<std::uint32_t>(found - members_.begin());
}

bool MemberNames::IsWritable(std::uint32_t number) const {
    return members_[number]->elementFlags.Has(ElementFlags::kWritable);
}

MemberNames::Numbers::const_iterator MemberNames::FirstFrom(std::string_view name) const {
    return std::lower_bound(byName_.begin(), byName_.end(), name,
                            [this](std::uint32_t a, std::string_view b) { return names_[a] < b; });
}

MemberNames::Numbers MemberNames::FilesAt(std::string_view spelling) const {
    const auto first = FirstFrom(spelling);
    return Numbers(first, std::find_if(first, byName_.end(), [&](auto number) { return names_[number] != spelling; }));
}

MemberNames::Numbers MemberNames::Inside(std::string_view spelling) const {
    const std::string prefix = std::string(spelling) + "/";
    const auto first = FirstFrom(prefix);
    const auto last =
        std::find_if(first, byName_.end(), [&](auto number) { return !names_[number].starts_with(prefix); });
    Numbers numbers(first, last);
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

bool MemberNames::IsThere(std::string_view spelling) const {
    const auto file = FirstFrom(spelling);
    if (file != byName_.end() && names_[*file] == spelling) return true;
    const std::string prefix = std::string(spelling) + "/";
    const auto inside = FirstFrom(prefix);
    return inside != byName_.end() && names_[*inside].starts_with(prefix);
}

// Folders need no member of their own; their names are then those of what lies in them.
std::string MemberNames::SpellingOf(const ZipTreeNode& top, std::size_t depth) const {
    const ZipTreeNode* node = &top;
    while (node->Header() == nullptr && !node->GetChildren().Empty())
        node = (*node->GetChildren().begin()).second.Get();
    if (node->Header() == nullptr) return "";
    return std::string(Cut(names_[NumberOf(*node->Header())], depth));
}

std::string MemberNames::SpellingOf(const BasicArray<String>& path, std::string_view bytes) const {
    std::string spelling;
    const ZipTreeNode* node = &volume_.RootNode();
    std::size_t depth = 0;
    for (const String& part : path) {
        ++depth;
        node = node == nullptr ? nullptr : node->FindChild(part);
        spelling += (depth == 1 ? "" : "/") + std::string(bytes.substr(0, bytes.find('/')));
        bytes.remove_prefix(std::min(bytes.find('/'), bytes.size() - 1) + 1);
        if (node != nullptr && !IsThere(spelling)) spelling = SpellingOf(*node, depth);
    }
    return spelling;
}

std::string MemberNames::NewSpellingOf(const BasicArray<String>& path, std::string_view bytes) const {
    const std::size_t slash = bytes.rfind('/');
    if (slash == std::string_view::npos) return std::string(bytes);
    BasicArray<String> folder = path;
    folder.PopBack();
    return SpellingOf(folder, bytes.substr(0, slash)) + std::string(bytes.substr(slash));
}

const ZipTreeNode* MemberNames::Find(const BasicArray<String>& path) const {
    const ZipTreeNode* node = &volume_.RootNode();
    for (const String& part : path) {
        if (node != nullptr) node = node->FindChild(part);
    }
    return node;
}

MemberNames::Numbers MemberNames::SpelledOtherwise(const BasicArray<String>& path, std::string_view spelling) const {
    Numbers numbers;
    if (const ZipTreeNode* const node = Find(path)) {
        for (const ZipFileHeader* const member : MembersBelow(*node)) numbers.push_back(NumberOf(*member));
    }
    for (const std::uint32_t number : hidden_) {
        if (LiesAt(names_[number], path)) numbers.push_back(number);
    }
    std::erase_if(numbers, [&](std::uint32_t number) { return IsSpelled(names_[number], spelling); });
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

MemberNames::Numbers MemberNames::OtherFilesAt(const BasicArray<String>& path, std::string_view spelling) const {
    Numbers numbers = SpelledOtherwise(path, spelling);
    std::erase_if(numbers, [&](std::uint32_t number) { return LiesBelow(names_[number], path.Size()); });
    return numbers;
}

MemberNames::Numbers MemberNames::OthersInside(const BasicArray<String>& path, std::string_view spelling) const {
    Numbers numbers = SpelledOtherwise(path, spelling);
    std::erase_if(numbers, [&](std::uint32_t number) { return !LiesBelow(names_[number], path.Size()); });
    return numbers;
}

MemberNames::Numbers MemberNames::Hidden(const BasicArray<String>& path) const {
    Numbers numbers;
    std::copy_if(hidden_.begin(), hidden_.end(), std::back_inserter(numbers),
                 [&](std::uint32_t number) { return LiesAt(names_[number], path); });
    return numbers;
}

MemberNames::Numbers MemberNames::HiddenBelow(const BasicArray<String>& path) const {
    Numbers numbers = Hidden(path);
    std::erase_if(numbers, [&](std::uint32_t number) { return !LiesBelow(names_[number], path.Size()); });
    return numbers;
}

MemberNames::Numbers MemberNames::BelowFiles(const BasicArray<String>& path) const {
    // A place in the tree, and whether it lies below a file.
    struct Pending {
        const ZipTreeNode* node;
        bool belowFile;
    };
    Numbers numbers;
    std::vector<Pending> pending;
    if (const ZipTreeNode* const top = Find(path)) pending.push_back({top, false});
    while (!pending.empty()) {
        const auto [node, belowFile] = pending.back();
        pending.pop_back();
        const ZipFileHeader* const member = node->Header();
        if (belowFile && member != nullptr) numbers.push_back(NumberOf(*member));
        const bool isFile = member != nullptr && !member->elementFlags.IsDirectory();
        for (const auto& child : node->GetChildren()) pending.push_back({child.second.Get(), belowFile || isFile});
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

std::vector<const ZipFileHeader*> MembersBelow(const ZipTreeNode& top) {
    std::vector<const ZipFileHeader*> members;
    std::vector<const ZipTreeNode*> pending = {&top};
    while (!pending.empty()) {
        const ZipTreeNode* const node = pending.back();
        pending.pop_back();
        if (node->Header() != nullptr) members.push_back(node->Header());
        for (const auto& child : node->GetChildren()) pending.push_back(child.second.Get());
    }
    return members;
}

}  // namespace ZEMA

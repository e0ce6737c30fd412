#include "MemoryVolume.h"

#include <algorithm>
#include <cstring>

#include "storage/PathOperations.h"

namespace ZEMA::testing {
namespace {

constexpr int kNewDirectory = ElementFlags::kDirectory | ElementFlags::kReadable | ElementFlags::kEntriesWritable;
constexpr int kNewFile = ElementFlags::kReadable | ElementFlags::kWritable;

class MemoryFile : public File {
public:
    MemoryFile(const String& name, Directory* parent, MemoryVolume& volume, MemoryNode& node)
        : File(name, parent), volume_(volume), node_(node) {}

    bool SetFlags(const ElementFlags* flags) override {
        node_.flags = *flags;
        volume_.log.push_back("flags " + Bytes(Name()));
        return true;
    }
    ElementFlags GetFlags() override { return node_.flags; }
    bool SetTimes(const ElementTimes* times) override {
        node_.times = *times;
        volume_.log.push_back("times " + Bytes(Name()));
        return true;
    }
    ElementTimes GetTimes() override { return node_.times; }

    bool ReadAt(std::uint64_t offset, std::uint64_t size, void* buffer, std::uint64_t* done) override {
        if (!Seek(offset) || size > GetSize() - offset || volume_.Fails()) return Moved(false, size, done);
        const std::uint64_t zeros = std::min(size, node_.zeros - std::min(offset, node_.zeros));
        std::memset(buffer, 0, zeros);
        if (size != zeros)
            node_.bytes.copy(static_cast<char*>(buffer) + zeros, size - zeros, offset + zeros - node_.zeros);
        return Moved(true, size, done);
    }
    bool WriteAt(std::uint64_t offset, std::uint64_t size, const void* buffer, std::uint64_t* done) override {
        if (!Seek(offset) || offset < node_.zeros || volume_.Fails()) return Moved(false, size, done);
        if (volume_.logsContents) volume_.log.push_back("write " + std::to_string(offset) + "+" + std::to_string(size));
        node_.bytes.replace(offset - node_.zeros, size, static_cast<const char*>(buffer), size);
        return Moved(true, size, done);
    }
    bool Read(std::uint64_t size, void* buffer, std::uint64_t* done) override {
        return ReadAt(position_, size, buffer, done);
    }
    bool Write(std::uint64_t size, const void* buffer, std::uint64_t* done) override {
        return WriteAt(position_, size, buffer, done);
    }
    std::uint64_t GetSize() override { return node_.zeros + node_.bytes.size(); }
    bool SetSize(std::uint64_t size) override {
        if (size < node_.zeros || volume_.Fails()) return false;
        if (volume_.logsContents) volume_.log.push_back("size " + std::to_string(size));
        node_.bytes.resize(size - node_.zeros);
        return true;
    }
    std::uint64_t GetPosition() override { return position_; }
    bool Seek(std::uint64_t position) override {
        if (position > GetSize()) return false;
        position_ = position;
        return true;
    }

protected:
    ~MemoryFile() override {
        if (volume_.logsContents) volume_.log.push_back("end");
    }

private:
    bool Moved(bool whole, std::uint64_t size, std::uint64_t* done) {
        if (done != nullptr) *done = whole ? size : 0;
        if (whole) position_ += size;
        return whole;
    }

    MemoryVolume& volume_;
    MemoryNode& node_;
    std::uint64_t position_ = 0;
};

}  // namespace

std::string Bytes(const String& text) {
    const AString bytes = text.ToAString();
    return {bytes.Data(), bytes.Length()};
}

std::string Bytes(const BasicArray<String>& components) {
    std::string joined;
    for (const String& component : components) {
        if (&component != components.begin()) joined += "/";
        joined += Bytes(component);
    }
    return joined;
}

MemoryNode* MemoryVolume::NewNode(int flags) {
    nodes.push_back(std::make_unique<MemoryNode>());
    nodes.back()->flags.bits = static_cast<std::uint8_t>(flags);
    return nodes.back().get();
}

MemoryNode* MemoryVolume::Put(const char* path, const char* bytes) {
    BasicArray<String> components;
    SplitPath(path, components);
    MemoryNode* node = top;
    for (const String& component : components) {
        MemoryNode*& child = node->children[component];
        if (child == nullptr) child = NewNode(kNewDirectory);
        node = child;
    }
    if (bytes == nullptr) return node;
    node->flags.bits = kNewFile;
    node->bytes = bytes;
    return node;
}

MemoryNode* MemoryNode::At(const BasicArray<String>& path) {
    MemoryNode* node = this;
    for (const String& component : path) {
        if (!node->children.Contains(component)) return nullptr;
        node = node->children[component];
    }
    return node;
}

MemoryNode* MemoryVolume::At(const char* path) const {
    BasicArray<String> components;
    SplitPath(path, components);
    return top->At(components);
}

MemoryNode* MemoryDirectory::Child(const String& name) const {
    return node_.children.Contains(name) ? node_.children[name] : nullptr;
}

Directory* MemoryDirectory::CreateChildObject(const String& name) {
    MemoryNode* const child = Child(name);
    return child != nullptr ? new MemoryDirectory(name, this, volume_, *child) : nullptr;
}

bool MemoryDirectory::CreateDirectory(const String& name) {
    Log("make", name);
    return Child(name) == nullptr && node_.children.Insert(name, volume_.NewNode(kNewDirectory));
}

File* MemoryDirectory::OpenFile(const String& name, const AccessStyle* style, bool create,
                                const std::uint64_t* truncateTo) {
    Log(style->write ? "write" : "read", name);
    MemoryNode* child = Child(name);
    if (child == nullptr && create) child = node_.children[name] = volume_.NewNode(kNewFile);
    if (child == nullptr || child->flags.IsDirectory()) return nullptr;
    if (style->write && (volume_.refusesWriting || !child->flags.Has(ElementFlags::kWritable))) return nullptr;
    if (truncateTo != nullptr) child->bytes.resize(*truncateTo);
    return new MemoryFile(name, this, volume_, *child);
}

bool MemoryDirectory::Remove(const String& name, bool force) {
    Log(force ? "remove with force" : "remove", name);
    if (Child(name) == nullptr) return false;
    node_.children.Erase(node_.children.Find(name));
    return true;
}

bool MemoryDirectory::GetChildFlags(const String& name, ElementFlags* flags) {
    const MemoryNode* const child = Child(name);
    if (child != nullptr) *flags = child->flags;
    return child != nullptr;
}

bool MemoryDirectory::SetChildFlags(const String& name, const ElementFlags* flags) {
    Log(flags->Has(ElementFlags::kWritable) ? "unprotect" : "protect", name);
    MemoryNode* const child = Child(name);
    if (child != nullptr) child->flags = *flags;
    return child != nullptr;
}

bool MemoryDirectory::HasDirectoryPath(const BasicArray<String>& components) {
    const MemoryNode* const node = node_.At(components);
    return node != nullptr && node->flags.IsDirectory();
}

bool MemoryDirectory::List(const String& pattern, Listing* listing) {
    for (const auto& [name, child] : node_.children) {
        if (MatchPattern(name, pattern)) listing->Insert({name, child->flags, child->times, child->bytes.size()});
    }
    return true;
}

}  // namespace ZEMA::testing

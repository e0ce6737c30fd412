#include "tests/storage/StorageTest.h"

#include <algorithm>
#include <cstring>

#include "storage/Path.h"

namespace ZEMA::testing {
namespace {

constexpr int kNewFile = ElementFlags::kReadable | ElementFlags::kWritable;
constexpr int kNewDirectory = ElementFlags::kDirectory | ElementFlags::kReadable | ElementFlags::kEntriesWritable;

// A file or a directory that stands for a node.
template <class Base>
class MemoryElement : public Base {
public:
    MemoryElement(const String& name, Directory* parent, MemoryVolume& volume, MemoryNode& node)
        : Base(name, parent), volume_(volume), node_(node) {}

    bool SetFlags(const ElementFlags* flags) override {
        return volume_.Allows("flags", this->Name()) && (node_.flags = *flags, true);
    }
    ElementFlags GetFlags() override { return node_.flags; }
    bool SetTimes(const ElementTimes* times) override {
        return volume_.Allows("times", this->Name()) && (node_.times = *times, true);
    }
    ElementTimes GetTimes() override { return node_.times; }

protected:
    MemoryVolume& volume_;
    MemoryNode& node_;
};

class MemoryFile : public MemoryElement<File> {
public:
    using MemoryElement::MemoryElement;

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
    bool Seek(std::uint64_t position) override { return position <= GetSize() && (position_ = position, true); }

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

    std::uint64_t position_ = 0;
};

class MemoryDirectory : public MemoryElement<Directory> {
public:
    using MemoryElement::MemoryElement;

    Directory* CreateChildObject(const String& name) override {
        MemoryNode* const child = Child(name);
        return child != nullptr ? new MemoryDirectory(name, this, volume_, *child) : nullptr;
    }
    bool CreateDirectory(const String& name) override {
        return volume_.Allows("make", name) && Child(name) == nullptr &&
               node_.children.Insert(name, volume_.NewNode(kNewDirectory));
    }
    File* OpenFile(const String& name, const AccessStyle* style, bool create,
                   const std::uint64_t* truncateTo) override {
        const bool allowed = volume_.Allows(style->write ? "write" : "read", name);
        MemoryNode* child = Child(name);
        if (child == nullptr && create) child = node_.children[name] = volume_.NewNode(kNewFile);
        if (!allowed || child == nullptr || child->flags.IsDirectory()) return nullptr;
        if (style->write && !child->flags.Has(ElementFlags::kWritable)) return nullptr;
        if (truncateTo != nullptr) child->bytes.resize(*truncateTo);
        return new MemoryFile(name, this, volume_, *child);
    }
    bool Remove(const String& name, bool force) override {
        if (!volume_.Allows(force ? "remove with force" : "remove", name) || Child(name) == nullptr) return false;
        node_.children.Erase(node_.children.Find(name));
        return true;
    }
    bool GetChildFlags(const String& name, ElementFlags* flags) override {
        return Child(name) != nullptr && (*flags = Child(name)->flags, true);
    }
    bool SetChildFlags(const String& name, const ElementFlags* flags) override {
        const bool allowed = volume_.Allows(flags->Has(ElementFlags::kWritable) ? "unprotect" : "protect", name);
        return allowed && Child(name) != nullptr && (Child(name)->flags = *flags, true);
    }
    bool IsEmpty() override { return node_.children.Empty(); }
    bool HasDirectoryPath(const BasicArray<String>& components) override {
        const MemoryNode* const node = node_.At(components);
        return node != nullptr && node->flags.IsDirectory();
    }
    bool HasFile(const String& name) override { return Child(name) != nullptr && !Child(name)->flags.IsDirectory(); }
    bool List(const String& pattern, Listing* listing) override {
        for (const auto& [name, child] : node_.children) {
            if (MatchPattern(name, pattern)) listing->Insert({name, child->flags, child->times, child->bytes.size()});
        }
        return true;
    }

private:
    MemoryNode* Child(const String& name) const {
        return node_.children.Contains(name) ? node_.children[name] : nullptr;
    }
};

BasicArray<String> Split(const char* path) {
    BasicArray<String> components;
    SplitPath(path, components);
    return components;
}

}  // namespace

std::string Bytes(const String& text) {
    const AString bytes = text.ToAString();
    return {bytes.Data(), bytes.Length()};
}

std::string Bytes(const BasicArray<String>& components) {
    std::string joined;
    for (const String& component : components)
        joined += (&component != components.begin() ? "/" : "") + Bytes(component);
    return joined;
}

std::string NamesIn(const Listing& listing) {
    std::string names;
    for (const Descriptor& entry : listing) {
        names += (names.empty() ? "" : ",") + Bytes(entry.name) + (entry.flags.IsDirectory() ? "/" : "");
    }
    return names;
}

std::string PathOf(const RefPointer<Directory>& element) {
    return element ? Bytes(GetFullPath(*element, true)) : "nothing";
}

MemoryNode* MemoryVolume::NewNode(int flags) {
    nodes.push_back(std::make_unique<MemoryNode>());
    nodes.back()->flags.bits = static_cast<std::uint8_t>(flags);
    return nodes.back().get();
}

bool MemoryVolume::Allows(const std::string& word, const String& name) {
    log.push_back(word + " " + Bytes(name));
    return word != refused;
}

MemoryNode* MemoryVolume::Put(const char* path, const char* bytes) {
    MemoryNode* node = top;
    for (const String& component : Split(path)) {
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
    return top->At(Split(path));
}

Directory* MountVolume(const String& name, Directory* parent, MemoryVolume& volume) {
    return new MemoryDirectory(name, parent, volume, *volume.top);
}

Object* LoggingFactory::Create(ObjectFactoryArgs* args) {
    const auto& question = dynamic_cast<const Directory::OpenArgs&>(*args);
    EXPECT_FALSE(question.create);
    log_.push_back(name_ + (": " + Bytes(GetFullPath(*question.base, true)) + " > " + Bytes(question.components)));
    return answer_(question);
}

LoggingFactory::Answer MountArchives(MemoryVolume& contents) {
    return [&contents](const Directory::OpenArgs& question) -> Object* {
        Path path(question);
        const String name = path.Name();
        if (!path.IsFile()) path.AppendToName(".zip");
        const RefPointer<File> file = path.OpenFile(&kReadStyle, false);
        char start[7];
        if (!file || !Read(*file, sizeof start, start) || std::string(start, sizeof start) != "archive") return nullptr;
        contents.log.push_back("mount " + Bytes(name));
        auto* const mounted = MountVolume(name, file->Parent(), contents);
        String alias = name;
        alias.Append(".zip");
        AddAlias(*mounted, alias);
        return mounted;
    };
}

StorageTest::StorageTest() {
    ObjectRegistry::Instance()->RemoveAll();
    root = GetRootDirectory();
    mem.Reset(MountVolume("mem", root.Get(), volume));
}

StorageTest::~StorageTest() {
    mem.Reset();
    root.Reset();
    ObjectRegistry::Instance()->RemoveAll();
}

}  // namespace ZEMA::testing

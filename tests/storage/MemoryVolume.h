// A volume of the storage tree that lives in memory, says what is done to it, and fails on demand.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "storage/Directory.h"
#include "tests/support/EventLog.h"

namespace ZEMA::testing {

std::string Bytes(const String& text);
std::string Bytes(const BasicArray<String>& components);  // joined by "/"

// One entry. The volume owns all nodes in one list, so that a tree of any depth goes at once.
struct MemoryNode {
    ElementFlags flags;
    ElementTimes times;
    std::uint64_t zeros = 0;  // as many stand before the bytes, and stay
    std::string bytes;
    BasicMap<String, MemoryNode*, StringCaseInsensitiveLess<String>> children;

    MemoryNode* At(const BasicArray<String>& path);  // null when there is none
};

// Outlives what is opened in it. Its failures are counted over all operations on the contents of files.
struct MemoryVolume {
    EventLog log;               // "make a", "read f"
    bool logsContents = false;  // also "write 10+5", "size 20", and "end" when the file goes
    bool refusesWriting = false;
    int failAt = 0;  // the operation that fails, from 1 on; 0 for none
    int operations = 0;
    std::vector<std::unique_ptr<MemoryNode>> nodes;
    MemoryNode* top = NewNode(ElementFlags::kDirectory | ElementFlags::kReadable | ElementFlags::kEntriesWritable);

    MemoryNode* NewNode(int flags);
    bool Fails() { return ++operations == failAt; }

    // Makes an entry, with the directories on the way.
    MemoryNode* Put(const char* path, const char* bytes);  // null for a directory
    MemoryNode* At(const char* path) const;
};

class MemoryDirectory : public Directory {
public:
    MemoryDirectory(const String& name, Directory* parent, MemoryVolume& volume, MemoryNode& node)
        : Directory(name, parent), volume_(volume), node_(node) {}

    bool SetFlags(const ElementFlags* flags) override { return node_.flags = *flags, true; }
    ElementFlags GetFlags() override { return node_.flags; }
    bool SetTimes(const ElementTimes* times) override { return node_.times = *times, true; }
    ElementTimes GetTimes() override { return node_.times; }
    Directory* CreateChildObject(const String& name) override;
    bool CreateDirectory(const String& name) override;
    File* OpenFile(const String& name, const AccessStyle* style, bool create, const std::uint64_t* truncateTo) override;
    bool Remove(const String& name, bool force) override;
    bool GetChildFlags(const String& name, ElementFlags* flags) override;
    bool SetChildFlags(const String& name, const ElementFlags* flags) override;
    bool IsEmpty() override { return node_.children.Empty(); }
    bool HasDirectoryPath(const BasicArray<String>& components) override;
    bool HasFile(const String& name) override { return Child(name) != nullptr && !Child(name)->flags.IsDirectory(); }
    bool List(const String& pattern, Listing* listing) override;

protected:
    ~MemoryDirectory() override = default;

private:
    MemoryNode* Child(const String& name) const;
    void Log(const char* what, const String& name) { volume_.log.push_back(what + (" " + Bytes(name))); }

    MemoryVolume& volume_;
    MemoryNode& node_;
};

}  // namespace ZEMA::testing

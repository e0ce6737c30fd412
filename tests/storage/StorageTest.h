// What the tests of the storage tree share: a volume in memory under the root, and factories that log their questions.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "registry/ObjectFactory.h"
#include "registry/ObjectRegistry.h"
#include "storage/PathOperations.h"
#include "tests/support/EventLog.h"

namespace ZEMA::testing {

std::string Bytes(const String& text);
std::string Bytes(const BasicArray<String>& components);   // joined by "/"
std::string NamesIn(const Listing& listing);               // "a,b", a slash behind directories
std::string PathOf(const RefPointer<Directory>& element);  // in full; "nothing" for null

// One entry. The volume owns all nodes in one list, so that a tree of any depth goes at once.
struct MemoryNode {
    ElementFlags flags;
    ElementTimes times;
    std::uint64_t zeros = 0;  // as many stand before the bytes, and stay
    std::string bytes;
    BasicMap<String, MemoryNode*, StringCaseInsensitiveLess<String>> children;

    MemoryNode* At(const BasicArray<String>& path);  // null when there is none
};

// A volume of the storage tree that lives in memory, says what is done to it, and fails on demand. Outlives what is
// opened in it. Its failures are counted over all operations on the contents of files.
struct MemoryVolume {
    EventLog log;               // "make a", "read f"
    std::string refused;        // the first word of the events that fail
    bool logsContents = false;  // also "write 10+5", "size 20", and "end" when the file goes
    int failAt = 0;             // the operation that fails, from 1 on; 0 for none
    int operations = 0;
    std::vector<std::unique_ptr<MemoryNode>> nodes;
    MemoryNode* top = NewNode(ElementFlags::kDirectory | ElementFlags::kReadable | ElementFlags::kEntriesWritable);

    MemoryNode* NewNode(int flags);
    bool Fails() { return ++operations == failAt; }
    bool Allows(const std::string& word, const String& name);

    // Makes an entry, with the directories on the way.
    MemoryNode* Put(const char* path, const char* bytes);  // null for a directory
    MemoryNode* At(const char* path) const;
};

// A new object of count 0 that stands for the top of the volume.
Directory* MountVolume(const String& name, Directory* parent, MemoryVolume& volume);

// Notes each question as "NAME: BASE > a/b" and leaves the answer to a function.
class LoggingFactory : public SpecificObjectFactory {
public:
    using Answer = std::function<Object*(const Directory::OpenArgs&)>;
    LoggingFactory(const char* name, FactoryRank rank, EventLog& log, Answer answer)
        : SpecificObjectFactory(rank), name_(name), log_(log), answer_(std::move(answer)) {}

    Object* Create(ObjectFactoryArgs* args) override;

private:
    const char* name_;
    EventLog& log_;
    Answer answer_;
};

// Does what an archive factory does: follows the path in front of the last component, and mounts the file that it finds
// there, or one with ".zip" behind the name. An archive is a file of the volume that starts with "archive"; its
// contents are `contents`.
LoggingFactory::Answer MountArchives(MemoryVolume& contents);

// The registry is empty before and after; "mem" stands under the root.
class StorageTest : public ::testing::Test {
protected:
    StorageTest();
    ~StorageTest() override;

    // Registers a factory under the type T.
    template <class T>
    void Register(const char* name, FactoryRank rank, LoggingFactory::Answer answer) {
        const auto factory = New<LoggingFactory>(name, rank, asked, std::move(answer));
        ASSERT_TRUE(ObjectFactory::Instance()->Register(&typeid(T), factory.Get(), &typeid(Directory)));
    }

    RefPointer<Directory> Open(const char* path, bool create = false) { return OpenDirectory(*root, path, create); }

    EventLog asked;  // by the factories
    MemoryVolume volume;
    MemoryVolume archive;
    RefPointer<Directory> root;
    RefPointer<Directory> mem;
};

}  // namespace ZEMA::testing

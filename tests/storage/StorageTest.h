// What the tests of the storage tree share: a volume in memory under the root, and factories that log their questions.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "MemoryVolume.h"
#include "registry/ObjectFactory.h"
#include "registry/ObjectRegistry.h"
#include "storage/PathOperations.h"

namespace ZEMA::testing {

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

    // Registers a factory for the concrete type T.
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

std::string NamesIn(const Listing& listing);               // "a,b", a slash behind directories
std::string PathOf(const RefPointer<Directory>& element);  // in full; "nothing" for null

}  // namespace ZEMA::testing

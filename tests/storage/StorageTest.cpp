#include "StorageTest.h"

#include "storage/Path.h"

namespace ZEMA::testing {

Object* LoggingFactory::Create(ObjectFactoryArgs* args) {
    const auto& question = dynamic_cast<const Directory::OpenArgs&>(*args);
    EXPECT_FALSE(question.create);
    log_.push_back(name_ + (": " + Bytes(GetFullPath(*question.base, true)) + " > " + Bytes(question.components)));
    return answer_(question);
}

LoggingFactory::Answer MountArchives(MemoryVolume& contents) {
    return [&contents](const Directory::OpenArgs& question) -> Object* {
        Path path(*question.base);
        path.Append(question.components);
        const String name = path.Name();
        if (!path.IsFile()) path.AppendToName(".zip");
        const RefPointer<File> file = path.OpenFile(&kReadStyle, false);
        char start[7];
        if (!file || !Read(*file, sizeof start, start) || std::string(start, sizeof start) != "archive") return nullptr;
        contents.log.push_back("mount " + Bytes(name));
        auto* const mounted = new MemoryDirectory(name, file->Parent(), contents, *contents.top);
        String alias = name;
        alias.Append(".zip");
        AddAlias(*mounted, alias);
        return mounted;
    };
}

StorageTest::StorageTest() {
    ObjectRegistry::Instance()->RemoveAll();
    root = GetRootDirectory();
    mem = New<MemoryDirectory>("mem", root.Get(), volume, *volume.top);
}

StorageTest::~StorageTest() {
    mem.Reset();
    root.Reset();
    ObjectRegistry::Instance()->RemoveAll();
}

std::string NamesIn(const Listing& listing) {
    std::string names;
    for (const Descriptor& entry : listing) {
        if (!names.empty()) names += ",";
        names += Bytes(entry.name);
        if (entry.flags.IsDirectory()) names += "/";
    }
    return names;
}

std::string PathOf(const RefPointer<Directory>& element) {
    return element ? Bytes(GetFullPath(*element, true)) : "nothing";
}

}  // namespace ZEMA::testing

// The storage tree over a temporary folder.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "platform/Foundation/NSPathUtilities.h"
#include "registry/ObjectFactory.h"
#include "registry/ObjectRegistry.h"
#include "storage/PathOperations.h"
#include "storage/local/MacOSXDirectory.h"
#include "storage/local/MacOSXStorageFactory.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA {

inline String Name(const std::string& utf8) {
    return String(Foundation::StringWithFileSystemRepresentation(utf8).Get());
}

inline mode_t ModeOf(const std::string& path) {
    struct stat status = {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

// While it stands, permissions bind the process also where the tests run as root. The folder is then its own.
class OrdinaryUser {
public:
    explicit OrdinaryUser(const testing::TemporaryFolder& folder) {
        if (geteuid() != 0) return;
        EXPECT_EQ(chown(folder.Path().c_str(), kNobody, kNobody), 0);
        EXPECT_EQ(seteuid(kNobody), 0);
    }
    ~OrdinaryUser() { EXPECT_EQ(seteuid(getuid()), 0); }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

    static constexpr uid_t kNobody = 65534;
};

// Stands while the local file system is mounted; `folder` is open as `directory`.
struct LocalTree {
    LocalTree() {
        EXPECT_TRUE(ObjectFactory::Instance()->Register(&typeid(MacOSXDirectory), factory.Get(), &typeid(Directory)));
        directory = Open(folder.Path().string());
    }
    ~LocalTree() {
        directory.Reset();
        ObjectRegistry::Instance()->RemoveAll();
    }
    static RefPointer<Directory> Open(const std::string& nativePath) {
        return OpenDirectory(*GetRootDirectory(), Name("file" + nativePath), false);
    }
    RefPointer<File> OpenFile(const char* name, const AccessStyle& style, bool create = false) const {
        return RefPointer<File>(directory->OpenFile(name, &style, create, nullptr));
    }

    testing::TemporaryFolder folder;
    RefPointer<MacOSXStorageFactory> factory = New<MacOSXStorageFactory>();
    RefPointer<Directory> directory;
};

}  // namespace ZEMA

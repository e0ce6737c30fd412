#include "platform/Foundation/NSPathUtilities.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <functional>
#include <map>

#include "tests/platform/Foundation/Text.h"
#include "tests/support/TemporaryFolder.h"

namespace Foundation {
namespace {

namespace fs = std::filesystem;
using ZEMA::testing::TemporaryFolder;

CFPointer<CFArrayRef> Array(const Json& texts) {
    CFPointer<CFMutableArrayRef> array(CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks));
    for (const Json& text : texts) CFArrayAppendValue(array.Get(), MakeText(ZEMA::UnitsOf(text)).get());
    return CFPointer<CFArrayRef>(array.Take());
}

Json Texts(const CFPointer<CFArrayRef>& array) {
    Json texts = Json::array();
    for (CFIndex index = 0; index < CFArrayGetCount(array.Get()); ++index) {
        texts.push_back(Utf8(static_cast<CFStringRef>(CFArrayGetValueAtIndex(array.Get(), index))));
    }
    return texts;
}

// Puts the folder's path in the place of "$R".
Json Placed(const Json& text, const TemporaryFolder& folder) {
    const std::string plain = text.is_string() ? text.get<std::string>() : "";
    return plain.starts_with("$R") ? Json(folder.Path().string() + plain.substr(2)) : text;
}

// The links and folders that the rows with "$R" speak of.
void MakeFixture(const TemporaryFolder& folder) {
    fs::create_directories(folder / "dir/sub");
    fs::create_directory(folder / "other");
    folder.Write("dir/f", "");
    fs::create_symlink("dir", folder / "ldir");
    fs::create_symlink(folder / "dir/sub", folder / "lsub");
    fs::create_symlink("dir/f", folder / "lf");
    fs::create_symlink("nowhere", folder / "dangling");
}

Json Standardized(const Json& row, const TemporaryFolder& folder) {
    if (row.contains("home")) setenv("HOME", row["home"].get<std::string>().c_str(), 1);
    return Utf8(stringByStandardizingPath(MakeText(Placed(row["path"], folder).get<std::string>()).get()));
}

TEST(NSPathUtilities, AnswersTheVectors) {
    const TemporaryFolder folder;
    MakeFixture(folder);
    const std::map<std::string, std::function<Json(const Json&)>> operations = {
        {"path_components", [](const Json& row) { return Texts(pathComponents(TextOf(row, "path").get())); }},
        {"path_with_components",
         [](const Json& row) { return Utf8(pathWithComponents(Array(row["components"]).Get())); }},
        {"append_path_component",
         [](const Json& row) {
             return Utf8(stringByAppendingPathComponent(TextOf(row, "path").get(), TextOf(row, "component").get()));
         }},
        {"standardize_path", [&](const Json& row) { return Standardized(row, folder); }},
        {"is_absolute", [](const Json& row) { return isAbsolutePath(TextOf(row, "path").get()); }},
    };
    int rows = 0;
    for (const Json& row : VectorsOf("paths.json")) {
        if (row["op"] == "fixture" || row["expected"].is_null()) continue;
        SCOPED_TRACE(row.dump());
#ifndef __APPLE__
        if (row.value("path", "") == "/private/tmp") continue;  // known by a shorter name too, on Apple's systems alone
#endif
        EXPECT_EQ(operations.at(row["op"])(row), Placed(row["expected"], folder));
        ++rows;
    }
    EXPECT_GT(rows, 100);
}

TEST(NSPathUtilities, StandardizesWhatTheVectorsLeaveOpen) {
    const auto standard = [](const char* path) { return Utf8(stringByStandardizingPath(MakeText(path).get())); };
    EXPECT_EQ(standard("././a"), "./a");
    EXPECT_EQ(standard("./"), ".") << "a relative path never becomes empty";
    EXPECT_EQ(standard("~no-such-user/x"), "~no-such-user/x");
    unsetenv("HOME");
    const std::string home = standard("~/x");
    setenv("HOME", "", 1);
    EXPECT_EQ(standard("~/x"), home) << "an empty HOME is none";
}

TEST(NSPathUtilities, GivesNoBytesForWhatCannotBeAPath) {
    // The empty text, a zero unit, and each half of a pair alone.
    for (const ZEMA::Units& units : {ZEMA::Units{}, {'a', 0, 'b'}, {'a', 0xD800}, {0xDC00, 'a'}}) {
        const Text path = MakeText(units);
        EXPECT_FALSE(FileSystemRepresentation(path.get()));
        EXPECT_TRUE(CFEqual(stringByStandardizingPath(path.get()).Get(), path.get()));
    }
    EXPECT_FALSE(FileSystemRepresentation(nullptr));
}

TEST(NSPathUtilities, KeepsEveryByteOfAName) {
    for (const char* name : {"plain", "\xEF\xBB\xBFmarked", "e\xCC\x81", "\xF0\x9F\xA7\xB1"}) {
        const StringPointer text = StringWithFileSystemRepresentation(name);
        EXPECT_EQ(FileSystemRepresentation(text.Get()), name);
    }
    EXPECT_FALSE(StringWithFileSystemRepresentation("caf\xE9"));
}

}  // namespace
}  // namespace Foundation

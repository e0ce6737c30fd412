// Paths as texts, and what is done by a path.
#include "storage/PathOperations.h"

#include <tuple>

#include "storage/Path.h"
#include "storage/RootDirectory.h"
#include "tests/storage/StorageCases.h"
#include "tests/storage/StorageTest.h"

namespace ZEMA::testing {
namespace {

TEST(NormalizeComponents, ResolvesDots) {
    const char* rows[][2] = {
        {"a/./b/../c", "a/c"}, {"../x", "../x"}, {"a/../../x", "../x"}, {"../../x/..", "../.."},    {"a/b/../..", ""},
        {"./.", ""},           {"a//b", "a//b"}, {"a//..", "a"},        {"..a/.b/c.", "..a/.b/c."},
    };
    for (const auto& [path, normalized] : rows) {
        BasicArray<String> components;
        SplitPath(path, components);
        NormalizeComponents(components);
        EXPECT_EQ(Bytes(components), normalized) << path;
    }
}

TEST(MatchPattern, TakesTheFirstOccurrence) {
    const std::tuple<const char*, const char*, bool> rows[] = {
        {"ABC", "abc", true},
        {"abc", "ab", false},
        {"", "", true},
        {"a", "", false},
        {"", "*", true},
        {"abc", "**", true},
        {"abc", "a*c", true},
        {"aba", "*a", false},  // the first "a" does not end the name
        {"xABc", "*b*", true},
        {"abc", "*b*d*", false},
        {"aXbXc", "a*x*c", true},
        {"a", "a*a", false},  // what the start took is not there any more
        {"ab", "b*", false},
        {"stra\303\237e.x", "strasse*X", true},  // one letter stands for two
        {"strasse", "*\303\237e", true},
    };
    for (const auto& [name, pattern, matches] : rows) {
        EXPECT_EQ(MatchPattern(FromUtf8(name), FromUtf8(pattern)), matches) << name << " against " << pattern;
    }
}

// Cases of "mem".
struct TreeCases : StorageTest {
    void TestBody() override {}

    void Prepare(const Words& words) {
        const std::string& kind = words[0];
        if (kind == "archives") Register<MemoryVolume>("zip", FactoryRank::Selective, MountArchives(archive));
        if (kind == "file") volume.Put(words[1].c_str(), words[2].c_str());
        if (kind == "inside") archive.Put(words[1].c_str(), words[2].c_str());
        if (kind == "folder") volume.Put(words[1].c_str(), nullptr);
        if (kind != "refuse") return;
        volume.refused.clear();
        for (std::size_t i = 1; i < words.size(); ++i) volume.refused += (i == 1 ? "" : " ") + words[i];
    }
    std::string Do(const Words& words) {
        if (words[0] != "log") return steps.Do("mem", words);
        std::string all;
        for (const std::string& event : volume.log) all += (all.empty() ? "" : ", ") + event;
        volume.log.clear();
        return all.empty() ? "-" : all;
    }

    StorageSteps steps;
};

TEST(StorageTree, DoesWhatItsCasesShow) {
    ExpectStorageCases<TreeCases>(ZEMA_CASES "/tree.cases");
}

class PathOperations : public StorageTest {
protected:
    PathOperations() {
        volume.Put("a/f", "text");
        volume.Put("a/doc.wqf", "archive");
        volume.Put("a/sub", nullptr);
        archive.Put("IMAGE100.WQFML", "model");
    }

    // The answer of List, then the names.
    std::string Listed(const char* patternPath) {
        Listing listing;
        const bool answer = List(*root, patternPath, &listing);
        return (answer ? "" : "false: ") + NamesIn(listing);
    }
};

TEST_F(PathOperations, OpenNoFileWithoutANameOrTheRightToCutIt) {
    const std::uint64_t two = 2;
    EXPECT_FALSE(OpenFile(*root, "mem/a/f", &kReadStyle, true, &two));
    for (const char* path : {"", "mem/../.."}) EXPECT_FALSE(OpenFile(*root, path, &kReadStyle, true, nullptr));
    EXPECT_EQ(volume.log, EventLog());
}

TEST_F(PathOperations, ListOpenDirectoriesFirst) {
    EXPECT_EQ(Listed("mem/a/*F"), "doc.wqf,f");
    Register<MemoryVolume>("zip", FactoryRank::Selective, MountArchives(archive));
    const RefPointer<Directory> mounted = Open("mem/a/doc.wqf");
    const RefPointer<Directory> volumeOnly(MountVolume("b", Open("mem/a").Get(), archive));
    EXPECT_EQ(Listed("mem/a/*"), "b/,doc.wqf/,f,sub/");  // a directory, once, and not under its alias
    EXPECT_EQ(Listed("mem/a/D*"), "doc.wqf/");
    EXPECT_EQ(Listed("*"), "false: mem/");  // the root's own answer
    EXPECT_EQ(Listed("mem/missing/*"), "false: ");
}

TEST_F(PathOperations, WalkTheFilesOfADirectory) {
    const RefPointer<Directory> a = Open("mem/a");
    EXPECT_TRUE(a->IsFindDone());
    EXPECT_FALSE(a->OpenFoundFile(&kReadStyle, nullptr));
    std::string found;
    for (a->FindFirstFile(); !a->IsFindDone(); a->FindNextFile()) {
        found += Bytes(a->OpenFoundFile(&kReadStyle, nullptr)->Name()) + ",";
        volume.Put("a/g", "new");  // the listing was taken at the start
    }
    EXPECT_EQ(found, "doc.wqf,f,");
    a->FindNextFile();
    EXPECT_TRUE(a->IsFindActive() && a->IsFindDone());
    a->FindFirstFile();
    a->EndFind();
    EXPECT_TRUE(!a->IsFindActive() && a->IsFindDone());
}

TEST_F(PathOperations, OpenPathBeginsWithAVolume) {
    auto& top = dynamic_cast<RootDirectory&>(*root);
    EXPECT_EQ(top.OpenPath("MEM", false), mem);
    EXPECT_EQ(PathOf(top.OpenPath("mem/a/sub", false)), "mem/a/sub");
    EXPECT_TRUE(top.OpenPath("mem/new", true));
    for (const char* path : {"", "other", "/mem", "mem/missing"}) EXPECT_FALSE(top.OpenPath(path, false)) << path;
    EXPECT_FALSE(top.Rename("mem", "other"));
}

TEST_F(PathOperations, PathsJoinWhatIsAppended) {
    const char* rows[][5] = {
        {"from the root", "mem", "", "", "mem"},
        {"below the name", "mem/a", "f", "mem/a", "f"},
        {"beside the name", "mem/a/f", "../doc.wqf", "mem/a", "doc.wqf"},
        {"above the parent", "mem/a/sub/x", "../../f", "mem/a", "f"},
        {"up to a directory, which it names", "mem/a/sub/x", "../..", "mem", "a"},
        {"up to the parent, which stays", "mem/a/f", "..", "mem/a", ""},
        {"nothing but itself", "", "./.", "", ""},
        {"up to the root, which has no name", "mem/a", "../..", "", ""},
        {"through what is missing", "mem/missing", "x", "nothing", "x"},
        {"above the root", "mem", "../..", "nothing", ""},
    };
    for (const auto& [what, first, second, parent, name] : rows) {
        Path path(first);
        path.Append(second);
        EXPECT_EQ(Bytes(path.Name()), name) << what;
        EXPECT_EQ(PathOf(path.Parent()), parent) << what;
    }
    Path model(*Open("mem/a"));
    model.Append("f");
    EXPECT_TRUE(model.IsFile());
    EXPECT_EQ(GetSize(*model.OpenFile(&kReadStyle, false)), 4u);
    const Path nowhere(*root);
    EXPECT_FALSE(nowhere.OpenDirectory(false) || nowhere.OpenFile(&kReadStyle, false) || nowhere.IsFile());
}

}  // namespace
}  // namespace ZEMA::testing

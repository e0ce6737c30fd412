// Random edits of archives beside a plain map of what they should hold.
#include <random>

#include "tests/storage/zip/ZipTest.h"
#include "tests/support/ArchiveTools.h"
#include "tests/support/StrictArchive.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {
namespace {

// Stored names and contents; a folder has its "/" and no contents.
using Members = std::map<std::string, std::string>;

// Chooses edits, makes them in both, and says whether the tree answered as the map does. Files and folders draw their
// names from different letters, so that neither ever stands in the other's way.
class Editor {
public:
    Editor(int seed, Members members) : random_(static_cast<std::uint32_t>(seed)), members_(std::move(members)) {}

    const Members& Expected() const { return members_; }
    const std::string& Story() const { return story_; }

    // False when the answers differ.
    bool Step(Directory& top) {
        using Edit = bool (Editor::*)(Directory&);
        const Edit edits[] = {&Editor::Write,      &Editor::Write,    &Editor::Write,
                              &Editor::Cut,        &Editor::Remove,   &Editor::Remove,
                              &Editor::MakeFolder, &Editor::Transfer, &Editor::Transfer};
        return (this->*edits[Pick(std::size(edits))])(top);
    }

private:
    std::size_t Pick(std::size_t count) { return random_() % count; }
    bool Has(const std::string& name) const { return members_.count(name) != 0; }

    // "" for the top.
    std::string AnyFolder() {
        std::vector<std::string> folders = {""};
        for (const auto& member : members_) {
            if (member.first.back() == '/') folders.push_back(member.first);
        }
        return folders[Pick(folders.size())];
    }
    std::string AnyFile() { return AnyFolder() + "fghi"[Pick(4)]; }
    std::string AnyNewFolder() { return AnyFolder() + "pq"[Pick(2)] + "/"; }

    // Sizes about the borders at which something changes, as text or as noise.
    std::string AnyContents() {
        const std::size_t sizes[] = {0, 1, 1000, 8191, 8192, 8193, 20000, 131071, 131073};
        const std::size_t size = sizes[Pick(9)];
        return Pick(2) == 0 ? std::string(size, 't') : NoiseBytes(size, static_cast<std::uint32_t>(random_()));
    }

    // The folder that holds a name, and the name alone, as a user might type them: in any case, when they are there.
    std::pair<RefPointer<Directory>, String> Find(Directory& top, std::string name) {
        const bool varies = Has(name);
        for (char& letter : name) {
            if (varies && Pick(2) == 0) letter = static_cast<char>(std::toupper(letter));
        }
        if (name.back() == '/') name.pop_back();
        const std::size_t slash = name.rfind('/') + 1;  // npos + 1 is 0
        return {slash == 0 ? RefPointer<Directory>(&top) : OpenDirectory(top, name.substr(0, slash - 1).c_str(), false),
                name.c_str() + slash};
    }

    bool Tell(const std::string& what, bool answer, bool expected) {
        story_ += what + (answer ? "\n" : " (refused)\n");
        return answer == expected;
    }

    bool Write(Directory& top) {
        const std::string name = AnyFile();
        const std::string contents = AnyContents();
        const auto [folder, last] = Find(top, name);
        const bool answer = WriteMember(*folder, Bytes(last).c_str(), contents);
        members_[name] = contents;
        return Tell("write " + name + " " + std::to_string(contents.size()), answer, true);
    }

    bool Cut(Directory& top) {
        const std::string name = AnyFile();
        const std::uint64_t size = Pick(30000);
        const auto [folder, last] = Find(top, name);
        const RefPointer<File> file = OpenFile(*folder, last, &kReadWriteStyle, false, nullptr);
        if (file && SetSize(*file, size)) members_[name].resize(size);
        return Tell("cut " + name, file != nullptr, Has(name));
    }

    // A file, or a folder with all that is in it.
    bool Remove(Directory& top) {
        const std::string name = Pick(2) == 0 ? AnyFile() : AnyFolder();
        if (name.empty()) return true;
        const auto [folder, last] = Find(top, name);
        const bool answer = folder->Remove(last, Pick(2) == 0);
        const bool expected = Has(name);
        std::erase_if(members_, [&](const auto& member) { return member.first.starts_with(name); });
        return Tell("remove " + name, answer, expected);
    }

    bool MakeFolder(Directory& top) {
        const std::string name = AnyNewFolder();
        if (name.size() > 7) return true;
        const bool expected = !Has(name);
        const auto [folder, last] = Find(top, name);
        members_.emplace(name, "");
        return Tell("make " + name, folder->CreateDirectory(last), expected);
    }

    // Moves or copies a file, over another one or not; or a folder with all that is in it, under a name that is free,
    // and never into itself.
    bool Transfer(Directory& top) {
        const bool isFolder = Pick(3) == 0;
        const bool move = Pick(2) == 0;
        const bool overwrite = !isFolder && Pick(2) == 0;
        const std::string from = isFolder ? AnyFolder() : AnyFile();
        const std::string to = isFolder ? AnyNewFolder() : AnyFile();
        if (from.empty() || from == to || (isFolder && (to.size() > 7 || Has(to)))) return true;
        const bool expected = isFolder ? !to.starts_with(from) : Has(from) && (overwrite || !Has(to));
        const auto [source, oldName] = Find(top, from);
        const auto [target, newName] = Find(top, to);
        const bool rename = move && !overwrite && source == target;
        const bool answer = rename ? source->Rename(oldName, newName)
                            : move ? source->Move(oldName, target.Get(), newName, overwrite, false)
                                   : source->Copy(oldName, target.Get(), newName, overwrite, false);
        const Members before = members_;
        for (const auto& [name, contents] : before) {
            if (!expected || !name.starts_with(from)) continue;
            members_[to + name.substr(from.size())] = contents;
            if (move) members_.erase(name);
        }
        return Tell((move ? "move " : "copy ") + from + " " + to, answer, expected);
    }

    std::mt19937 random_;
    Members members_;
    std::string story_;
};

// What the tree shows.
void Walk(Directory& directory, const std::string& path, Members& found) {
    Listing listing;
    List(directory, "*", &listing);
    for (const Descriptor& entry : listing) {
        const std::string name = path + Bytes(entry.name) + (entry.flags.IsDirectory() ? "/" : "");
        found[name] = entry.flags.IsDirectory() ? "" : ReadMember(directory, Bytes(entry.name).c_str());
        if (entry.flags.IsDirectory()) Walk(*OpenDirectory(directory, entry.name, false), name, found);
    }
}

// Members f, g, h and the folder p, in many forms.
ArchiveBuilder Shape(int number) {
    ArchiveBuilder archive;
    if (number == 0) return archive;
    for (const std::string name : {"f", "g", "p/", "h"}) {
        ArchiveMember member{.name = name, .contents = name == "p/" ? "" : name + kText, .deflated = name > "g"};
        if (number == 3 || number == 5) member.localExtra = std::string("\xFE\xCA\5\0local", 9);
        if (number == 3 || number == 4) member.centralExtra = std::string("\xFE\xCA\5\0extra", 9);
        if (number == 3 || number == 5) member.comment = "a comment";
        if (number == 6) member.sums = ArchiveMember::Sums::Behind;
        if (number == 7) member.gapBefore = "left over";
        archive.Add(member);
    }
    if (number == 4) archive.DirectoryOrder({2, 3, 0, 1});
    if (number == 5) archive.DirectoryOrder({3, 2, 1, 0});
    if (number == 2 || number == 5) archive.Comment("the archive's comment");
    return archive;
}

class ZipModelTest : public ZipTest, public ::testing::WithParamInterface<int> {};

TEST_P(ZipModelTest, HoldsWhatItShould) {
    RefPointer<Directory> top = Mount(Shape(GetParam()).Bytes());
    Editor editor(GetParam(), ReadStrictly(Archive()));
    for (int step = 0; step < 120; ++step) {
        ASSERT_TRUE(editor.Step(*top)) << editor.Story();
        ExpectSound(*top, editor.Expected());
        if (step % 7 == 0) {
            top.Reset();
            top = Remount();
            ASSERT_TRUE(top);
        }
        Members found;
        Walk(*top, "", found);
        ASSERT_TRUE(found == editor.Expected() && !HasFailure()) << editor.Story();
    }
    const TemporaryFolder folder;
    const std::string path = folder.Write("a.zip", Archive());
    EXPECT_EQ(ToolsThatRefuse(path, editor.Expected().empty()), std::vector<std::string>());
}

INSTANTIATE_TEST_SUITE_P(Shapes, ZipModelTest, ::testing::Range(0, 8));

}  // namespace
}  // namespace ZEMA::testing

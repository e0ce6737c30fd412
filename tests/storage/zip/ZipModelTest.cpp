// Random edits of a storage tree beside a plain map of what it should hold: in an archive and in a local folder.
#include <random>

#include "storage/local/MacOSXDirectory.h"
#include "storage/local/MacOSXStorageFactory.h"
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
    Editor(int seed, bool anyCase, Members members)
        : random_(static_cast<std::uint32_t>(seed)), anyCase_(anyCase), members_(std::move(members)) {}

    const Members& Expected() const { return members_; }
    const std::string& Story() const { return story_; }

    // False when the answers differ.
    bool Step(Directory& top) {
        using Edit = bool (Editor::*)(Directory&);
        const Edit edits[] = {&Editor::Write,  &Editor::Write,      &Editor::Write, &Editor::Cut, &Editor::Remove,
                              &Editor::Remove, &Editor::MakeFolder, &Editor::Move,  &Editor::Copy};
        return (this->*edits[Pick(std::size(edits))])(top);
    }

private:
    std::size_t Pick(std::size_t count) { return random_() % count; }
    bool Has(const std::string& name) const { return members_.count(name) != 0; }

    // "" for the top, else with its "/".
    std::string AnyFolder() {
        std::vector<std::string> folders = {""};
        for (const auto& member : members_) {
            if (member.first.back() == '/') folders.push_back(member.first);
        }
        return folders[Pick(folders.size())];
    }
    std::string AnyFile() { return AnyFolder() + std::string(1, "fghi"[Pick(4)]); }

    // Sizes about the borders at which something changes, as text or as noise.
    std::string AnyContents() {
        const std::size_t sizes[] = {0, 1, 1000, 8191, 8192, 8193, 20000, 131071, 131073};
        const std::size_t size = sizes[Pick(9)];
        return Pick(2) == 0 ? std::string(size, 't') : NoiseBytes(size, static_cast<std::uint32_t>(random_()));
    }

    // What a user might type for a name: in any case, when it is there already.
    String Typed(const std::string& name) {
        std::string typed = name;
        for (char& letter : typed) {
            if (anyCase_ && Has(name) && Pick(2) == 0) letter = static_cast<char>(std::toupper(letter));
        }
        return String(AString(typed.c_str()));
    }

    bool Tell(const std::string& what, bool answer, bool expected) {
        story_ += what + (answer ? "\n" : " (refused)\n");
        return answer == expected;
    }

    bool Write(Directory& top) {
        const std::string name = AnyFile();
        const std::string contents = AnyContents();
        const bool answer = WriteMember(top, Bytes(Typed(name)).c_str(), contents);
        members_[name] = contents;
        return Tell("write " + name + " " + std::to_string(contents.size()), answer, true);
    }

    bool Cut(Directory& top) {
        const std::string name = AnyFile();
        const std::uint64_t size = Pick(30000);
        const RefPointer<File> file = OpenFile(top, Typed(name), &kReadWriteStyle, false, nullptr);
        if (file && SetSize(*file, size)) members_[name].resize(size);
        return Tell("cut " + name, file != nullptr, Has(name));
    }

    // The folder that holds a name, and the name alone.
    static std::pair<RefPointer<Directory>, String> Split(Directory& top, const String& path) {
        BasicArray<String> parts;
        SplitPath(path, parts);
        const String last = parts.Back();
        parts.PopBack();
        return {OpenDirectory(top, parts, false), last};
    }

    // A file, or a folder with all that is in it.
    bool Remove(Directory& top) {
        const std::string name = Pick(2) == 0 ? AnyFile() : AnyFolder();
        if (name.empty()) return true;
        const auto [folder, last] = Split(top, Typed(name.substr(0, name.find_last_not_of('/') + 1)));
        const bool answer = folder->Remove(last, Pick(2) == 0);
        const bool expected = Has(name);
        std::erase_if(members_, [&](const auto& member) { return member.first.starts_with(name); });
        return Tell("remove " + name, answer, expected);
    }

    std::string AnyFolderName() { return AnyFolder() + std::string(1, "pq"[Pick(2)]); }

    bool MakeFolder(Directory& top) {
        const std::string name = AnyFolderName();
        if (name.size() > 6) return true;
        const auto [folder, last] = Split(top, String(AString(name.c_str())));
        const bool answer = folder->CreateDirectory(last);
        return Tell("make " + name, answer, members_.emplace(name + "/", "").second);
    }

    bool Move(Directory& top) { return Pick(3) == 0 ? TransferFolder(top, true) : TransferFile(top, true); }
    bool Copy(Directory& top) { return Pick(3) == 0 ? TransferFolder(top, false) : TransferFile(top, false); }

    // A folder with all that is in it, under a name that is free; never into itself.
    bool TransferFolder(Directory& top, bool move) {
        const std::string from = AnyFolder();
        const std::string to = AnyFolderName();
        if (from.empty() || to.size() > 6 || Has(to + "/")) return true;
        const bool expected = !to.starts_with(from);
        const auto [source, oldName] = Split(top, Typed(from.substr(0, from.size() - 1)));
        const auto [target, newName] = Split(top, String(AString(to.c_str())));
        const bool answer = move ? source->Move(oldName, target.Get(), newName, false, false)
                                 : source->Copy(oldName, target.Get(), newName, false, false);
        const Members before = members_;
        for (const auto& [name, contents] : before) {
            if (!expected || !name.starts_with(from)) continue;
            members_[to + "/" + name.substr(from.size())] = contents;
            if (move) members_.erase(name);
        }
        return Tell((move ? "move " : "copy ") + from + " " + to, answer, expected);
    }

    // Over another one or not.
    bool TransferFile(Directory& top, bool move) {
        const std::string from = AnyFile();
        const std::string to = AnyFile();
        if (from == to) return true;
        const bool overwrite = Pick(2) == 0;
        const bool expected = Has(from) && (overwrite || !Has(to));
        const auto [source, oldName] = Split(top, Typed(from));
        const auto [target, newName] = Split(top, Typed(to));
        const bool rename = move && !overwrite && source == target;
        const bool answer = rename ? source->Rename(oldName, newName)
                            : move ? source->Move(oldName, target.Get(), newName, overwrite, false)
                                   : source->Copy(oldName, target.Get(), newName, overwrite, false);
        if (expected) members_[to] = members_[from];
        if (expected && move) members_.erase(from);
        return Tell((move ? "move " : "copy ") + from + " " + to, answer, expected);
    }

    std::mt19937 random_;
    bool anyCase_;
    Members members_;
    std::string story_;
};

// What the tree shows.
void Walk(Directory& directory, const std::string& path, Members& found) {
    Listing listing;
    List(directory, "*", &listing);
    for (const Descriptor& entry : listing) {
        const std::string name = path + Bytes(entry.name);
        if (!entry.flags.IsDirectory()) {
            found[name] = ReadMember(directory, Bytes(entry.name).c_str());
            continue;
        }
        found[name + "/"] = "";
        Walk(*OpenDirectory(directory, entry.name, false), name + "/", found);
    }
}

ArchiveMember Member(const char* name, bool deflated, ArchiveMember::Sums sums) {
    ArchiveMember member;
    member.name = name;
    member.contents = name + std::string(30000, 't');
    member.deflated = deflated;
    member.sums = sums;
    return member;
}

std::string ExtraField(const std::string& text) {
    return std::string("\xFE\xCA") + static_cast<char>(text.size()) + '\0' + text;
}

// Members f, g, h and the folder p, in many forms.
ArchiveBuilder Shape(int number) {
    const auto sums = number == 6 ? ArchiveMember::Sums::Behind : ArchiveMember::Sums::InHeader;
    ArchiveMember members[] = {Member("f", true, sums), Member("g", false, sums), Member("h", true, sums)};
    for (ArchiveMember& member : members) {
        if (number == 3 || number == 5) member.localExtra = ExtraField("local extra");
        if (number == 3 || number == 4) member.centralExtra = ExtraField("extra");
        if (number == 3 || number == 5) member.comment = "a comment";
        if (number == 7) member.gapBefore = "left over";
    }
    ArchiveBuilder archive;
    if (number == 0) return archive;
    archive.Add(members[0]).Add(members[1]).Folder("p/").Add(members[2]);
    if (number == 4) archive.DirectoryOrder({2, 3, 0, 1});
    if (number == 5) archive.DirectoryOrder({3, 2, 1, 0});
    if (number == 2 || number == 5) archive.Comment("the archive's comment");
    return archive;
}

class ZipModelTest : public ZipTest, public ::testing::WithParamInterface<int> {};

TEST_P(ZipModelTest, HoldsWhatItShould) {
    RefPointer<Directory> top = Mount(Shape(GetParam()).Bytes());
    Editor editor(GetParam(), true, ReadStrictly(Archive()));
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

TEST_P(ZipModelTest, AndSoDoesALocalFolder) {
    ASSERT_TRUE(ObjectFactory::Instance()->Register(&typeid(MacOSXDirectory), New<MacOSXStorageFactory>().Get(),
                                                    &typeid(Directory)));
    const TemporaryFolder folder;
    Editor editor(GetParam(), false, {});
    RefPointer<Directory> top;
    for (int step = 0; step < 120; ++step) {
        if (step % 7 == 0) {
            top.Reset();
            top = Open(("file" + folder.Path().string()).c_str());
            ASSERT_TRUE(top);
        }
        Members found;
        const bool same = editor.Step(*top);
        Walk(*top, "", found);
        ASSERT_TRUE(same && found == editor.Expected()) << editor.Story();
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, ZipModelTest, ::testing::Range(0, 8));

}  // namespace
}  // namespace ZEMA::testing

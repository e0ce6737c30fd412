// Archives of many forms, edited one step after the other beside a plain map of what they should hold, and archives
// made by the standard programs, which accept them afterwards.
#include <algorithm>
#include <cctype>
#include <sstream>

#include "storage/Path.h"
#include "tests/storage/zip/ZipTest.h"
#include "tests/support/ArchiveTools.h"
#include "tests/support/StrictArchive.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {
namespace {

// Stored names and contents; a folder has its "/" and no contents.
using Members = std::map<std::string, std::string>;

// In the archive, where what is there goes by its name in capitals, too.
Path PathOf(std::string name, const Members& members) {
    if (members.count(name) != 0) std::ranges::transform(name, name.begin(), [](int c) { return std::toupper(c); });
    if (name.ends_with("/")) name.pop_back();
    return Path(("mem/a.wqf/" + name).c_str());
}

// Makes an edit, "move f p/g" or "text p/f 8193", in the archive and in the map.
bool Make(const std::string& edit, Members& members) {
    std::string verb, name, more;
    std::istringstream(edit) >> verb >> name >> more;
    const Path from = PathOf(name, members);
    if (verb == "make") return members.emplace(name, ""), from.OpenDirectory(true) != nullptr;
    if (verb == "text" || verb == "noise" || verb == "cut") {
        const std::size_t size = std::stoul(more);
        if (verb != "cut") members[name] = verb == "text" ? std::string(size, 't') : NoiseBytes(size);
        members[name].resize(size);
        const RefPointer<File> file = from.OpenFile(&kReadWriteStyle, true);
        return SetSize(*file, size) && (verb == "cut" || WriteAt(*file, 0, size, members[name].data()));
    }
    const Path to = PathOf(more, members);
    const Members before = members;
    for (const auto& [old, contents] : before) {
        if (!old.starts_with(name)) continue;
        if (verb != "copy") members.erase(old);
        if (verb != "remove") members[more + old.substr(name.size())] = contents;
    }
    return verb == "remove" ? from.Parent()->Remove(from.Name(), true)
           : verb == "copy" ? from.Parent()->Copy(from.Name(), to.Parent(), to.Name(), true, false)
           : from.Parent() == to.Parent() && before.count(more) == 0
               ? from.Parent()->Rename(from.Name(), to.Name())
               : from.Parent()->Move(from.Name(), to.Parent(), to.Name(), true, false);
}

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

TEST_F(ZipTest, HoldsWhatItShouldAfterEveryEdit) {
    const char* const edits[] = {
        "make p/",          "text g 20000", "noise f 8193",    "text p/f 131073", "make p/q/",
        "noise p/q/i 1000", "text h 0",     "noise g 8191",    "copy p/ q/",      "move f p/q/f",
        "cut g 100",        "text q/f 1",   "move p/q/ q/q2/", "remove p/",       "move h g",
        "noise i 131071",   "copy q/f i",   "cut i 8192",      "remove q/q/i",    "make p/",
        "move g p/h",       "move q/ p/r/", "text f 8192",     "remove p/r/",     "remove f",
    };
    for (int shape = 0; shape < 8; ++shape) {
        SCOPED_TRACE(shape);
        RefPointer<Directory> top = Mount(Shape(shape).Bytes());
        Members members = ReadStrictly(Archive());
        int step = 0;
        for (const std::string edit : edits) {
            SCOPED_TRACE(edit);
            ASSERT_TRUE(Make(edit, members));
            ExpectSound(*top, members);
            if (++step % 7 == 0) {
                top.Reset();
                top = Remount();
                ASSERT_TRUE(top);
            }
            Members found;
            Walk(*top, "", found);
            ASSERT_EQ(found, members);
        }
        const TemporaryFolder folder;
        EXPECT_EQ(ToolsThatRefuse(folder.Write("a.zip", Archive())), std::vector<std::string>());
    }
}

std::string Python(const std::string& output, const std::string& more) {
    return "python3 -c \"import sys, zipfile\nz = zipfile.ZipFile(" + output +
           ", 'w', 8)\nz.write('IMAGE100.WQFML')\n" + more + "z.write('tex/Noise.bin')\nz.close()\"";
}

TEST_F(ZipTest, ReadsAndEditsWhatOtherProgramsPack) {
    const struct {
        const char* tool;
        std::string command;
        bool opens = true;  // its members; otherwise they are listed and refused
    } rows[] = {
        {"zip", "zip -r a.zip IMAGE100.WQFML tex"},
        {"zip", "zip -0 -r a.zip IMAGE100.WQFML tex"},
        {"zip", "zip -r a.zip IMAGE100.WQFML tex && echo hello | zip -z a.zip"},
        {"zip", "zip -r - IMAGE100.WQFML tex | cat > a.zip", false},
        {"7z", "7z a -tzip a.zip IMAGE100.WQFML tex"},
        {"7z", "7z a -tzip -mx=0 a.zip IMAGE100.WQFML tex"},
        {"python3", Python("'a.zip'", "z.comment = b'by Python'\n")},
        // To a stream that cannot seek, so that sums come behind the data.
        {"python3", Python("sys.stdout.buffer", "z.write('tex')\n") + " | cat > a.zip"},
        {"bsdtar", "bsdtar --format zip -cf a.zip IMAGE100.WQFML tex", false},
    };
    const std::string model = kText + "end";
    const std::string noise = NoiseBytes(9000);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.command);
        if (!HaveTool(row.tool)) continue;
        const TemporaryFolder folder;
        ASSERT_TRUE(RunIn(folder.Path().string(), "mkdir tex"));
        folder.Write("IMAGE100.WQFML", model);
        folder.Write("tex/Noise.bin", noise);
        ASSERT_TRUE(RunIn(folder.Path().string(), row.command));

        RefPointer<Directory> top = Mount(folder.Read("a.zip"));
        ASSERT_TRUE(top);
        EXPECT_EQ(NamesOf(*top), "IMAGE100.WQFML,tex/");
        EXPECT_EQ(ReadMember(*top, "image100.wqfml"), row.opens ? model : kNotOpened);
        EXPECT_EQ(ReadMember(*top, "TEX/noise.bin"), row.opens ? noise : kNotOpened);
        // The last member may lose a descriptor.
        EXPECT_TRUE(row.opens ? WriteMember(*top, "tex/noise.bin", model) : top->Remove("IMAGE100.WQFML", false));
        top.Reset();
        EXPECT_EQ(ToolsThatRefuse(folder.Write("edited.zip", Archive())), std::vector<std::string>());
        top = Remount();
        ASSERT_TRUE(top);
        EXPECT_EQ(NamesOf(*top), row.opens ? "IMAGE100.WQFML,tex/" : "tex/");
        EXPECT_EQ(ReadMember(*top, "tex/Noise.bin"), row.opens ? model : kNotOpened);
    }
}

}  // namespace
}  // namespace ZEMA::testing

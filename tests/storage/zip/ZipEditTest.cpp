// Editing archives in place: writing, adding and removing members.
#include "storage/zip/ZipFormat.h"
#include "tests/storage/zip/ZipTest.h"
#include "tests/support/StrictArchive.h"

namespace ZEMA::testing {
namespace {

using Members = std::map<std::string, std::string>;
using Sums = ArchiveMember::Sums;

constexpr AccessStyle kReadShareAll{1, 0, 1, 1};
constexpr AccessStyle kAll{1, 1, 1, 1};

TEST_F(ZipTest, AddsWhereTheNextReaderLooks) {
    BuiltArchive built = ArchiveBuilder().Stored("one", "1").Stored("two", "2").Build();
    RefPointer<Directory> top = Mount(built.Set32(built.centralHeaders[1], 0).bytes);
    EXPECT_TRUE(WriteMember(*top, "new", kText));
    top.Reset();
    top = Remount();
    EXPECT_EQ(NamesOf(*top), "new,one") << "before the record that ends the directory early";
    EXPECT_EQ(ReadMember(*top, "new"), kText);
}

TEST_F(ZipTest, PacksWhatGetsSmaller) {
    std::string letters = NoiseBytes(100000);
    for (char& letter : letters) letter = static_cast<char>('a' + (letter & 1));
    const struct {
        const char* what;
        std::string bytes;
        std::uint16_t method;
    } rows[] = {
        {"nothing", "", kMethodStored},
        {"noise", NoiseBytes(1000), kMethodStored},
        {"text", kText, kMethodDeflated},
        {"letters, packed at the highest level", letters, kMethodDeflated},
        {"one unit", NoiseBytes(8192), kMethodStored},
        {"text then noise", std::string(0x20000, 'x') + NoiseBytes(0x20000), kMethodDeflated},
    };
    const RefPointer<Directory> top = Mount("");
    Members members;
    ASSERT_TRUE(WriteMember(*top, "m", "first") && WriteMember(*top, "behind", members["behind"] = kText));
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        ASSERT_TRUE(WriteMember(*top, "m", members["m"] = row.bytes));
        ExpectSound(*top, members);
        const ZipFileHeader& member = FirstMember(*top);
        EXPECT_EQ(member.method, row.method);
        EXPECT_TRUE(Archive().substr(kLocalHeaderSize + 1, member.compressedSize) ==
                    (row.method == kMethodDeflated ? DeflateBytes(row.bytes, 9, 9) : row.bytes));
    }
}

TEST_F(ZipTest, ChangesPartsOfMembers) {
    const RefPointer<Directory> top = Mount(ArchiveBuilder().Deflated("m", kText).Bytes());
    std::string expected = kText;
    {
        const RefPointer<File> file = OpenMember(*top, "m", kReadWriteStyle);
        ASSERT_TRUE(file && WriteAt(*file, 100, 5, "hello") && GetPosition(*file) == 105);
        expected.replace(100, 5, "hello");
        std::uint64_t done = 99;
        EXPECT_FALSE(WriteAt(*file, 30001, 1, "x", &done)) << "behind the end";
        EXPECT_EQ(done, 0u);
        EXPECT_FALSE(WriteAt(*file, 1, ~std::uint64_t{0}, "x") || SetSize(*file, 0x100000000));
        ASSERT_TRUE(WriteAt(*file, 29999, 3, "end", &done) && done == 3 && GetSize(*file) == 30002);
        expected.replace(29999, 1, "end");
        ASSERT_TRUE(SetSize(*file, 20000) && GetPosition(*file) == 20000 && SetSize(*file, 50000));
        expected.resize(20000);
        expected.resize(50000, '\0');
        EXPECT_EQ(Contents(*file), expected) << "what grows is zero, never what was cut off";
        ASSERT_TRUE(Seek(*file, 50000) && Write(*file, 3, "end"));
        expected += "end";
    }
    ExpectSound(*top, {{"m", expected}});
    const std::uint64_t size = 7;
    const RefPointer<File> cut = OpenFile(*top, "m", &kReadWriteStyle, false, &size);
    EXPECT_EQ(Contents(*cut), "ttttttt");
    EXPECT_EQ(GetPosition(*cut), 7u);
}

TEST_F(ZipTest, WritesNothingWithoutChanges) {
    const std::string bytes = ArchiveBuilder().Deflated("m", kText).Stored("n", kText).Bytes();
    const RefPointer<Directory> top = Mount(bytes);
    EXPECT_EQ(Contents(*OpenMember(*top, "m", kReadWriteStyle)), kText);
    EXPECT_TRUE(SetSize(*OpenMember(*top, "n", kReadWriteStyle), kText.size()));
    const ElementFlags flags{0x4E};
    const ElementTimes times{1, 2, 3};
    EXPECT_TRUE(top->SetChildFlags("m", &flags) && top->SetChildTimes("m", &times));
    const RefPointer<File> file = OpenMember(*top, "m", kReadStyle);
    EXPECT_TRUE(file->GetFlags() == flags && file->GetTimes() == times);
    EXPECT_EQ(Archive(), bytes);
}

TEST_F(ZipTest, RefusesWhatWouldLeaveTheTreeOdd) {
    const BuiltArchive built = ArchiveBuilder().Stored("file", kText).Folder("dir/").Stored("implicit/x", "").Build();
    const RefPointer<Directory> top = Mount(built.bytes);
    const auto create = [&](const String& name) {
        return RefPointer<File>(top->OpenFile(name, &kReadWriteStyle, true, nullptr)) != nullptr;
    };
    const std::string longest(65535, 'n');
    const std::string tooLong = longest + "n";
    for (const char* name : {"IMPLICIT", "dir", "", "..", ".", "a/b", tooLong.c_str()}) {
        EXPECT_FALSE(create(name)) << name;
    }
    for (const char* name : {"FILE", "DIR", "..", "", "a/", longest.c_str()}) {
        EXPECT_FALSE(top->CreateDirectory(name)) << name;
    }
    EXPECT_FALSE(top->CreateChildObject("none") || top->CreateChildObject("file") || top->Remove("none", true));
    EXPECT_EQ(Archive(), built.bytes);
    EXPECT_TRUE(top->CreateDirectory("implicit")) << "it gets an entry of its own";
    EXPECT_TRUE(create(longest.c_str()) && create(FromUtf8("\xC3\xA4")));
    EXPECT_FALSE(create("\xC3\xA4")) << "bytes taken as ASCII have no text";
    EXPECT_EQ(ReadStrictly(Archive()).count("\xC3\xA4"), 1u);
}

TEST_F(ZipTest, ErasedDirectoriesHoldNothing) {
    const BuiltArchive built =
        ArchiveBuilder().Folder("d/").Stored("d/e/open", kText).Stored("d/other", kText).Stored("z", "z").Build();
    const RefPointer<Directory> top = Mount(built.bytes);
    const RefPointer<Directory> d = OpenDirectory(*top, "d", false);
    const RefPointer<Directory> e = OpenDirectory(*top, "d/e", false);
    d->FindFirstFile();
    e->FindFirstFile();
    EXPECT_TRUE(top->Remove("d", true));
    ExpectSound(*top, {{"z", "z"}});
    for (Directory* erased : {d.Get(), e.Get()}) {
        SCOPED_TRACE(Bytes(erased->Name()));
        const String child = erased == d.Get() ? "other" : "open";
        Listing listing;
        ElementFlags flags;
        EXPECT_FALSE(erased->List("*", &listing));
        EXPECT_FALSE(erased->IsEmpty() || erased->HasDirectoryPath({}));
        EXPECT_FALSE(erased->HasFile(child) || erased->GetChildFlags(child, &flags) || erased->Remove(child, true));
        EXPECT_FALSE(erased->SetFlags(&flags)) << "its member is gone";
        EXPECT_FALSE(erased->CreateDirectory("x") || erased->OpenFile("x", &kReadWriteStyle, true, nullptr));
        EXPECT_TRUE(erased->IsFindDone() && !erased->IsFindActive());
    }
    EXPECT_FALSE(d->CreateChildObject("e"));
    ExpectSound(*top, {{"z", "z"}});
    EXPECT_EQ(NamesOf(*top), "z");
    EXPECT_TRUE(WriteMember(*top, "d/new", "n")) << "in a new directory, not in the one that is held";
    ExpectSound(*top, {{"d/", ""}, {"d/new", "n"}, {"z", "z"}});
}

TEST_F(ZipTest, WritesBackWithTheLastWriter) {
    const RefPointer<Directory> top = Mount(ArchiveBuilder().Deflated("m", kText).Bytes());
    const std::string before = Archive();
    RefPointer<File> one = OpenMember(*top, "m", kAll);
    RefPointer<File> two = OpenMember(*top, "m", kAll);
    RefPointer<File> last = OpenMember(*top, "m", kReadShareAll);
    ASSERT_TRUE(WriteAt(*one, 0, 3, "one") && SetSize(*two, 3));
    EXPECT_EQ(Contents(*last), "one");
    one.Reset();
    EXPECT_EQ(Archive(), before) << "somebody has it open";
    two.Reset();
    last.Reset();
    EXPECT_EQ(Archive(), before) << "a reader closed last";
    EXPECT_EQ(ReadMember(*top, "m"), kText) << "the changes went with the contents";

    one = OpenMember(*top, "m", kAll);
    last = OpenMember(*top, "m", kReadShareAll);
    ASSERT_TRUE(WriteAt(*one, 0, 3, "two"));
    last.Reset();
    one.Reset();
    ExpectSound(*top, {{"m", "two" + kText.substr(3)}});
}

// Local header 0 to 31, data to 34, central header to 81, end record to 103.
TEST_F(ZipTest, ShowsInWhatHappensToTheArchive) {
    RefPointer<Directory> top = Mount(ArchiveBuilder().Stored("m", "abc").Bytes());
    RefPointer<File> member = OpenMember(*top, "m", kReadWriteStyle);
    volume.log.clear();
    volume.logsContents = true;
    EXPECT_TRUE(WriteAt(*member, 0, 10, "0123456789"));
    top.Reset();
    EXPECT_EQ(volume.log, EventLog()) << "an open member keeps its archive, and nothing is written before it closes";
    member.Reset();
    const EventLog expected = {"size 110",                    // room for 7 more bytes
                               "write 41+69", "write 96+12",  // what lies behind moves; counts and directory offset
                               "write 31+10",                 // the data
                               "write 14+12", "write 57+12",  // sums in both headers; the method is the same
                               "end"};
    EXPECT_EQ(volume.log, expected);
}

}  // namespace
}  // namespace ZEMA::testing

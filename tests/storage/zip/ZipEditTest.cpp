// Editing archives in place: writing, adding and removing members.
#include "storage/zip/ZipFormat.h"
#include "tests/storage/zip/ZipTest.h"
#include "tests/support/StrictArchive.h"

namespace ZEMA::testing {
namespace {

using Members = std::map<std::string, std::string>;

const std::string kText(30000, 't');

TEST_F(ZipTest, OpenMembersKeepTheirPlaceWhileOthersMove) {
    const RefPointer<Directory> top = Mount(
        ArchiveBuilder().Deflated("a", kText).Stored("b", kText).Stored("z", "last").DirectoryOrder({2, 0, 1}).Bytes());
    const RefPointer<File> open = OpenMember(*top, "z", kReadStyle);
    ASSERT_TRUE(open);
    const std::string noise = NoiseBytes(200000);
    EXPECT_TRUE(WriteMember(*top, "a", noise));
    EXPECT_EQ(Contents(*open), "last");
    EXPECT_TRUE(WriteMember(*top, "new", noise));
    EXPECT_EQ(Contents(*open), "last");
    EXPECT_TRUE(WriteMember(*top, "a", "x") && top->Remove("b", false));
    EXPECT_EQ(Contents(*open), "last");
    ExpectSound(*top, {{"a", "x"}, {"z", "last"}, {"new", noise}});
}

TEST_F(ZipTest, CountsDescriptorsToTheirMembers) {
    ArchiveMember member;
    member.name = "m";
    member.contents = kText;
    member.sums = ArchiveMember::Sums::Behind;
    const std::string folder = ArchiveBuilder().Folder("d/").Bytes();
    const RefPointer<Directory> top = Mount(ArchiveBuilder().Add(member).Bytes());
    ASSERT_TRUE(top->CreateDirectory("d"));
    ExpectSound(*top, {{"m", kText}, {"d/", ""}});
    ASSERT_TRUE(top->Remove("m", false));
    ExpectSound(*top, {{"d/", ""}});
    EXPECT_EQ(Archive().size(), folder.size()) << "nothing is left of it";
}

TEST_F(ZipTest, PacksWhatGetsSmaller) {
    const struct {
        const char* what;
        std::string bytes;
        std::uint16_t method;
        std::uint32_t packed;  // 0: not told
    } rows[] = {
        {"nothing", "", kMethodStored, 0},
        {"one byte", "x", kMethodStored, 1},
        {"noise", NoiseBytes(1000), kMethodStored, 1000},
        {"text", kText, kMethodDeflated, 0},
        {"one byte below a unit", std::string(8191, 'x'), kMethodDeflated, 0},
        {"one unit", NoiseBytes(8192), kMethodStored, 8192},
        {"one byte above", NoiseBytes(8193), kMethodStored, 8193},
        {"noise of one move and one byte", NoiseBytes(0x20001), kMethodStored, 0x20001},
        {"text then noise", std::string(0x20000, 'x') + NoiseBytes(0x20000), kMethodDeflated, 0},
    };
    const RefPointer<Directory> top = Mount("");
    Members members;
    ASSERT_TRUE(WriteMember(*top, "m", "first") && WriteMember(*top, "behind", members["behind"] = kText));
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        ASSERT_TRUE(WriteMember(*top, "m", members["m"] = row.bytes));
        ExpectSound(*top, members);
        const ZipFileHeader& member = *VolumeOf(*top).MembersInFileOrder().First();
        EXPECT_EQ(member.method, row.method);
        EXPECT_EQ(row.method == kMethodStored ? member.compressedSize : 0, row.packed);
    }
}

TEST_F(ZipTest, ChangesPartsOfMembers) {
    RefPointer<Directory> top = Mount(ArchiveBuilder().Deflated("m", kText).Bytes());
    std::string expected = kText;
    {
        const RefPointer<File> file = OpenMember(*top, "m", kReadWriteStyle);
        ASSERT_TRUE(file && WriteAt(*file, 100, 5, "hello") && GetPosition(*file) == 105);
        expected.replace(100, 5, "hello");
        EXPECT_FALSE(WriteAt(*file, 30001, 1, "x")) << "behind the end";
        EXPECT_FALSE(WriteAt(*file, 1, ~std::uint64_t{0}, "x") || SetSize(*file, 0x100000000));
        ASSERT_TRUE(WriteAt(*file, 29999, 3, "end") && GetSize(*file) == 30002);
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
    const ElementFlags flags{0x4F};
    const ElementTimes times{1, 2, 3};
    EXPECT_TRUE(top->SetChildFlags("m", &flags) && top->SetChildTimes("m", &times));
    ElementFlags flagsRead;
    ElementTimes timesRead;
    EXPECT_TRUE(top->GetChildFlags("m", &flagsRead) && flagsRead == flags);
    EXPECT_TRUE(top->GetChildTimes("m", &timesRead) && timesRead == times);
    EXPECT_EQ(Archive(), bytes);
}

TEST_F(ZipTest, RefusesWhatWouldLeaveTheTreeOdd) {
    const BuiltArchive built = ArchiveBuilder().Stored("file", kText).Folder("dir/").Stored("implicit/x", "").Build();
    const RefPointer<Directory> top = Mount(built.bytes);
    const auto create = [&](const char* name) {
        return RefPointer<File>(top->OpenFile(name, &kReadWriteStyle, true, nullptr));
    };
    EXPECT_FALSE(top->CreateDirectory("FILE") || top->CreateDirectory("DIR"));
    EXPECT_FALSE(create("IMPLICIT") || create("dir") || create("") || create("..") || create(".") || create("a/b"));
    EXPECT_FALSE(top->CreateDirectory("..") || top->CreateDirectory("") || top->CreateDirectory("a/"));
    EXPECT_FALSE(top->CreateChildObject("none") || top->CreateChildObject("file"));
    EXPECT_FALSE(create(std::string(65536, 'n').c_str()) || top->CreateDirectory(std::string(65535, 'n').c_str()));
    EXPECT_FALSE(top->Remove("none", true));
    EXPECT_EQ(Archive(), built.bytes);
    EXPECT_TRUE(top->CreateDirectory("implicit")) << "it gets an entry of its own";
    EXPECT_TRUE(create(std::string(65535, 'n').c_str()));
    EXPECT_TRUE(create("\xC3\xA4") == nullptr) << "bytes taken as ASCII have no text";
    EXPECT_TRUE(RefPointer<File>(top->OpenFile(FromUtf8("\xC3\xA4"), &kReadWriteStyle, true, nullptr)));
    EXPECT_EQ(ReadStrictly(Archive()).count("\xC3\xA4"), 1u);
}

TEST_F(ZipTest, RemovesOnlyWhatNobodyUses) {
    const BuiltArchive built =
        ArchiveBuilder().Stored("d/e/open", kText).Stored("d/other", kText).Stored("z", "z").Build();
    const RefPointer<Directory> top = Mount(built.bytes);
    RefPointer<File> open = OpenMember(*top, "d/e/open", kReadStyle);
    EXPECT_FALSE(top->Remove("d", true));
    open.Reset();
    const ElementFlags protectedFlags{ElementFlags::kReadable};
    ASSERT_TRUE(SetChildFlags(*top, "d/other", &protectedFlags));
    EXPECT_FALSE(top->Remove("d", false));
    EXPECT_EQ(Archive(), built.bytes);

    const RefPointer<Directory> d = OpenDirectory(*top, "d", false);
    const RefPointer<Directory> e = OpenDirectory(*top, "d/e", false);
    EXPECT_TRUE(top->Remove("d", true));
    ExpectSound(*top, {{"z", "z"}});
    for (Directory* erased : {d.Get(), e.Get()}) {
        Listing listing;
        EXPECT_FALSE(erased->List("*", &listing) || erased->IsEmpty() || erased->HasFile("other") ||
                     erased->CreateDirectory("x") || erased->OpenFile("x", &kReadWriteStyle, true, nullptr) ||
                     erased->Remove("other", true) || erased->SetFlags(&protectedFlags) ||
                     erased->HasDirectoryPath({}));
    }
    ExpectSound(*top, {{"z", "z"}});
    EXPECT_EQ(NamesOf(*top), "z");
    EXPECT_TRUE(WriteMember(*top, "d/new", "n")) << "in a new directory, not in the one that is held";
    ExpectSound(*top, {{"d/", ""}, {"d/new", "n"}, {"z", "z"}});
}

// Only the first one stands in the tree; another comes to light when it is gone and the archive is read again.
TEST_F(ZipTest, MovesTheFirstOfMembersThatShareAName) {
    RefPointer<Directory> top =
        Mount(ArchiveBuilder().Stored("a", "1").Stored("A", "2").Stored("a", "3").Stored("z", "z").Bytes());
    EXPECT_TRUE(WriteMember(*top, "A", kText) && top->Rename("a", "b"));
    EXPECT_EQ(NamesOf(*top), "b,z");
    top.Reset();
    top = Remount();
    EXPECT_EQ(NamesOf(*top), "A,b,z");
    EXPECT_FALSE(top->Rename("a", "Z"));
    EXPECT_TRUE(top->Move("a", top.Get(), "Z", true, false));
    top.Reset();
    top = Remount();
    ExpectSound(*top, {{"a", "3"}, {"b", kText}, {"z", "2"}});
}

TEST_F(ZipTest, ChangesNothingInAReadOnlyArchive) {
    const std::string bytes = ArchiveBuilder().Stored("m", kText).Bytes();
    Put("a.wqf", bytes).flags.Set(ElementFlags::kWritable, false);
    const RefPointer<Directory> top = Remount();
    ASSERT_TRUE(top);
    EXPECT_EQ(ReadMember(*top, "m"), kText);
    EXPECT_FALSE(OpenMember(*top, "m", kReadWriteStyle) || WriteMember(*top, "new", "x") || top->CreateDirectory("d") ||
                 top->Remove("m", true));
    EXPECT_EQ(Archive(), bytes);
}

TEST_F(ZipTest, SharesMembersAsTheStylesSay) {
    const AccessStyle r{1, 0, 0, 0}, rs{1, 0, 1, 0}, rw{1, 1, 0, 0}, rws{1, 1, 1, 0}, rwss{1, 1, 1, 1}, w{0, 1, 1, 1},
        rss{1, 0, 1, 1}, none{0, 0, 1, 1};
    const struct {
        const char* what;
        AccessStyle first, second;
        bool both;
    } rows[] = {
        {"two readers that share", rs, rs, true},
        {"a reader, then a writer that does not share reading", rs, rw, false},
        {"a reader that shares no writing, then a writer", rs, rwss, false},
        {"a reader that shares all, then a writer that shares all", rss, rwss, true},
        {"a lone reader", r, rss, false},
        {"a second reader that shares nothing", rss, r, false},
        {"a writer, then a reader that allows no writer", rwss, rs, false},
        {"a writer, then a reader that does", rws, rss, true},
        {"two writers that share", rwss, w, true},
        {"a writer that shares no writing", rws, w, false},
        {"neither reading nor writing", rw, none, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const RefPointer<Directory> top = Mount(ArchiveBuilder().Deflated("m", kText).Bytes());
        RefPointer<File> first = OpenMember(*top, "m", row.first);
        ASSERT_TRUE(first);
        EXPECT_EQ(OpenMember(*top, "M", row.second) != nullptr, row.both);
        first.Reset();
        EXPECT_TRUE(OpenMember(*top, "m", rw)) << "all counts are back";
    }
}

TEST_F(ZipTest, WritesBackWithTheLastWriter) {
    const AccessStyle all{1, 1, 1, 1}, reader{1, 0, 1, 1};
    const RefPointer<Directory> top = Mount(ArchiveBuilder().Deflated("m", kText).Bytes());
    const std::string before = Archive();
    RefPointer<File> one = OpenMember(*top, "m", all);
    RefPointer<File> two = OpenMember(*top, "m", all);
    RefPointer<File> last = OpenMember(*top, "m", reader);
    ASSERT_TRUE(WriteAt(*one, 0, 3, "one") && SetSize(*two, 3));
    EXPECT_EQ(Contents(*last), "one");
    one.Reset();
    EXPECT_EQ(Archive(), before) << "somebody has it open";
    two.Reset();
    last.Reset();
    EXPECT_EQ(Archive(), before) << "a reader closed last";
    EXPECT_EQ(ReadMember(*top, "m"), kText) << "the changes went with the contents";

    one = OpenMember(*top, "m", all);
    last = OpenMember(*top, "m", reader);
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

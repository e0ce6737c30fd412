// Edits that fail: at a limit of the format before anything is changed, and half way without a crash.
#include <functional>

#include "storage/zip/ZipFormat.h"
#include "tests/storage/zip/ZipTest.h"
#include "tests/support/StrictArchive.h"

namespace ZEMA::testing {
namespace {

const std::string kText(30000, 't');

// Mounts an archive whose members begin behind as many zeros as leave `room` bytes before the end record would pass the
// last offset.
struct FarArchive {
    FarArchive(BuiltArchive built, std::uint64_t room) {
        const std::uint64_t start = kMaxOffset - built.endRecord - room;
        const auto shift = static_cast<std::uint32_t>(start);
        for (std::size_t i = 0; i < built.centralHeaders.size(); ++i) {
            built.Set32(built.centralHeaders[i] + kCentralLocalHeaderOffset,
                        static_cast<std::uint32_t>(built.localHeaders[i]) + shift);
        }
        built.Set32(built.endRecord + kEndDirectoryOffset, static_cast<std::uint32_t>(built.directory) + shift);
        file = New<TailFile>(start, built.bytes, log);
        volume = New<ZipStorageVolume>(file.Get(), kReadWriteStyle);
        EXPECT_TRUE(volume->Open());
        top = New<ZipStorageDirectory>("far", nullptr, volume.Get(), &volume->RootNode());
    }

    EventLog log;  // outlives the file
    RefPointer<TailFile> file;
    RefPointer<ZipStorageVolume> volume;
    RefPointer<Directory> top;
};

TEST(ZipLimits, NoOffsetPassesThirtyTwoBits) {
    const BuiltArchive built = ArchiveBuilder().Deflated("a", kText).Stored("b", "bbb").Build();
    const std::string noise = NoiseBytes(20000);
    const std::uint64_t newMember = kLocalHeaderSize + 3 + kCentralHeaderSize + 3;
    const std::uint64_t growth = noise.size() - DeflateBytes(kText).size();
    using Edit = std::function<void(Directory&)>;
    const Edit add = [](Directory& top) { RefPointer<File>(top.OpenFile("new", &kReadWriteStyle, true, nullptr)); };
    const Edit grow = [&noise](Directory& top) { WriteMember(top, "a", noise); };
    const Edit shrink = [](Directory& top) { WriteMember(top, "a", "x"); };
    const Edit remove = [](Directory& top) { top.Remove("a", false); };
    const struct {
        const char* what;
        std::uint64_t room;
        const Edit& edit;
        bool changes;
    } rows[] = {
        {"a new member just fits", newMember, add, true}, {"one byte short", newMember - 1, add, false},
        {"growth just fits", growth, grow, true},         {"growth by one byte too many", growth - 1, grow, false},
        {"shrinking needs no room", 0, shrink, true},     {"nor does removing", 0, remove, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        FarArchive far(built, row.room);
        const std::string before = far.file->Tail();
        row.edit(*far.top);
        EXPECT_EQ(far.file->Tail() != before, row.changes);
        EXPECT_EQ(ReadMember(*far.top, "b"), "bbb");
        const RefPointer<ZipStorageVolume> fresh = New<ZipStorageVolume>(far.file.Get(), kReadStyle);
        ASSERT_TRUE(fresh->Open());
        const RefPointer<Directory> again = New<ZipStorageDirectory>("far", nullptr, fresh.Get(), &fresh->RootNode());
        EXPECT_EQ(ReadMember(*again, "b"), "bbb");
        EXPECT_TRUE(row.changes || ReadMember(*far.top, "a") == kText);
    }
}

TEST_F(ZipTest, HoldsNoMoreThanTheCountCan) {
    ArchiveBuilder builder;
    for (int i = 0; i < 65534; ++i) builder.Stored(std::to_string(i), "");
    const RefPointer<Directory> top = Mount(builder.Bytes());
    EXPECT_TRUE(top->CreateDirectory("one more"));
    const std::string full = Archive();
    EXPECT_FALSE(top->CreateDirectory("too many") || DirectoryExists(*top, "too many"));
    EXPECT_EQ(Archive(), full);
    EXPECT_EQ(ReadStrictly(full).size(), 65535u);
    EXPECT_TRUE(top->Remove("one more", false) && top->CreateDirectory("too many"));
}

TEST_F(ZipTest, EditsNothingThatOverlaps) {
    const BuiltArchive good = ArchiveBuilder().Stored("a", "aaa").Stored("b", "bbb").Stored("c", "ccc").Build();
    const auto local = [&good](std::size_t of, std::size_t offset) {
        return BuiltArchive(good)
            .Set32(good.centralHeaders[of] + kCentralLocalHeaderOffset, static_cast<std::uint32_t>(offset))
            .bytes;
    };
    const auto size = [&good](std::size_t of, std::uint32_t packed) {
        return BuiltArchive(good)
            .Set32(good.localHeaders[of] + kLocalCompressedSize, packed)
            .Set32(good.centralHeaders[of] + kCentralCompressedSize, packed)
            .bytes;
    };
    using Edit = std::function<void(Directory&)>;
    const Edit removeA = [](Directory& top) { top.Remove("a", true); };
    const Edit removeB = [](Directory& top) { top.Remove("b", true); };
    const Edit writeB = [](Directory& top) { WriteMember(top, "b", "longer than before"); };
    const Edit add = [](Directory& top) { top.CreateDirectory("new"); };
    const std::uint32_t far = 0xFFFFFFFF;
    const struct {
        const char* what;
        std::string bytes;
        std::vector<const Edit*> refused;
    } rows[] = {
        {"two members at one place", local(0, good.localHeaders[1]), {&removeA, &removeB, &writeB}},
        {"a member over the next one", size(0, 10), {&removeA, &removeB, &writeB}},
        {"a member over the directory", size(2, 10), {&add}},
        {"a member over everything", size(1, far), {&removeB, &writeB}},
        {"the last one over everything", size(2, far), {&add}},
        {"a member in the directory", local(0, good.directory), {&removeA, &removeB, &writeB, &add}},
        {"a member behind the end", local(0, far), {&removeA, &removeB, &writeB, &add}},
        {"an entry over the end record",
         BuiltArchive(good).Set16(good.centralHeaders[2] + kCentralCommentLength, 10).bytes,
         {&removeA, &removeB, &writeB, &add}},
        {"no members by its count",
         BuiltArchive(good).Set32(good.endRecord + kEndEntriesOnDisk, 0).bytes,
         {&removeA, &removeB}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        for (const Edit* edit : row.refused) {
            const RefPointer<Directory> top = Mount(row.bytes);
            ASSERT_TRUE(top);
            (*edit)(*top);
            EXPECT_EQ(Archive(), row.bytes);
        }
        for (const Edit* edit : {&removeA, &removeB, &writeB, &add}) {  // and whatever happens, nothing breaks down
            if (const RefPointer<Directory> top = Mount(row.bytes)) (*edit)(*top);
            if (const RefPointer<Directory> top = Remount()) ReadMember(*top, "c");
        }
    }
}

// Fails every operation on the archive file once. A volume that goes on editing afterwards knows where everything is:
// no other member suffers.
TEST_F(ZipTest, SurvivesFailuresOfEveryOperation) {
    const std::string bytes =
        ArchiveBuilder().Deflated("a", kText).Stored("b", kText).Deflated("d/c", kText).Stored("z", kText).Bytes();
    const std::string noise = NoiseBytes(300000);
    const std::vector<std::function<bool(Directory&)>> edits = {
        [&](Directory& top) { return WriteMember(top, "a", noise); },
        [&](Directory& top) { return WriteMember(top, "new", kText); },
        [](Directory& top) { return top.Remove("b", false); },
        [](Directory& top) { return WriteMember(top, "d/c", ""); },
        [](Directory& top) { return top.CreateDirectory("e"); },
    };
    int failAt = 0;
    do {
        SCOPED_TRACE(++failAt);
        RefPointer<Directory> top = Mount(bytes);
        volume.operations = 0;
        volume.failAt = failAt;
        for (const auto& edit : edits) {
            EXPECT_TRUE(edit(*top) || volume.operations >= failAt);
            if (volume.operations >= failAt) break;
        }
        volume.failAt = 0;
        const bool goesOn = top->CreateDirectory("later");
        EXPECT_EQ(ReadMember(*top, "none"), kNotOpened);
        ReadMember(*top, "a");
        top.Reset();
        top = Remount();
        EXPECT_TRUE(!goesOn || (top && DirectoryExists(*top, "later") && ReadMember(*top, "z") == kText));
    } while (volume.operations >= failAt && failAt < 1000);
    EXPECT_GT(failAt, 50);
    EXPECT_LT(failAt, 1000);
}

}  // namespace
}  // namespace ZEMA::testing

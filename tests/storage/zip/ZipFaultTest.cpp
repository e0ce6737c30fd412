// Edits that fail: before anything is changed, or half way without a crash.
#include <functional>

#include "storage/zip/ZipFormat.h"
#include "tests/storage/zip/ZipTest.h"
#include "tests/support/AllocationFailure.h"
#include "tests/support/StrictArchive.h"

namespace ZEMA::testing {
namespace {

TEST_F(ZipTest, EditsNothingThatOverlaps) {
    const BuiltArchive good = ArchiveBuilder().Stored("a", "aaa").Stored("b", "bbb").Stored("c", "ccc").Build();
    const auto set = [&good](std::size_t of, std::size_t field, std::size_t value, std::size_t width) {
        return BuiltArchive(good).Set(good.centralHeaders[of] + field, value, width);
    };
    const auto local = [&](std::size_t of, std::size_t offset) {
        return set(of, kCentralLocalHeaderOffset, offset, 4).bytes;
    };
    const auto size = [&](std::size_t of, std::uint32_t packed) {
        const std::size_t inLocal = good.localHeaders[of] + kLocalCompressedSize;
        return set(of, kCentralCompressedSize, packed, 4).Set32(inLocal, packed).bytes;
    };
    const std::map<char, std::function<void(Directory&)>> edits = {
        {'a', [](Directory& top) { top.Remove("a", true); }},
        {'b', [](Directory& top) { top.Remove("b", true); }},
        {'w', [](Directory& top) { WriteMember(top, "b", "longer than before"); }},
        {'n', [](Directory& top) { top.CreateDirectory("new"); }},
    };
    const std::uint32_t far = 0xFFFFFFFF;
    const struct {
        const char* what;
        std::string bytes, refused;
    } rows[] = {
        {"two members at one place", local(0, good.localHeaders[1]), "abw"},
        {"a member over the next one", size(0, 10), "abw"},
        {"a member over the directory", size(2, 10), "n"},
        {"a member over everything", size(1, far), "bw"},
        {"the last one over everything", size(2, far), "n"},
        {"a member in the directory", local(0, good.directory), "abwn"},
        {"a member behind the end", local(0, far), "abwn"},
        {"an entry over the end record", set(2, kCentralCommentLength, 10, 2).bytes, "abwn"},
        {"no members by its count", BuiltArchive(good).Set32(good.endRecord + kEndEntriesOnDisk, 0).bytes, "ab"},
    };
    for (const auto& row : rows) {
        for (const auto& [name, edit] : edits) {
            SCOPED_TRACE(row.what + std::string(", edit ") + name);
            const RefPointer<Directory> top = Mount(row.bytes);
            ASSERT_TRUE(top);
            edit(*top);
            EXPECT_TRUE(row.refused.find(name) == std::string::npos || Archive() == row.bytes);
            if (const RefPointer<Directory> again = Remount()) ReadMember(*again, "c");  // and nothing breaks down
        }
    }
    const RefPointer<Directory> top = Mount(good.bytes);
    volume.At("a.wqf")->bytes = set(0, kCentralCommentLength, 1, 2).bytes;
    EXPECT_FALSE(top->Remove("a", true)) << "somebody made its entry overlap the next since it was read";
}

using Edits = std::vector<std::function<bool(Directory&)>>;

// One step each.
Edits EditsOf(const std::string& noise) {
    return {
        [&](Directory& top) { return WriteMember(top, "a", noise); },
        [](Directory& top) { return WriteMember(top, "new", ""); },
        [](Directory& top) { return WriteMember(top, "new", kText); },
        [](Directory& top) { return top.Remove("b", false); },
        [](Directory& top) { return WriteMember(top, "d/c", ""); },
        [](Directory& top) { return top.CreateDirectory("e"); },
    };
}

const std::string kEdited =
    ArchiveBuilder().Deflated("a", kText).Stored("b", kText).Deflated("d/c", kText).Stored("z", kText).Bytes();

// Fails every operation on the archive file once. A mount gives a sound volume or none. An edit that has changed the
// archive is the last one. A volume that goes on knows where everything is: no other member suffers.
TEST_F(ZipTest, SurvivesFailuresOfEveryOperation) {
    const std::string noise = NoiseBytes(300000);
    int failAt = 0;
    do {
        SCOPED_TRACE(++failAt);
        volume.operations = 0;
        volume.failAt = failAt;
        RefPointer<Directory> top = Mount(kEdited);
        if (volume.operations >= failAt) {
            EXPECT_EQ(NamesOf(*mem), top ? "a.wqf/" : "a.wqf");
            EXPECT_TRUE(!top || ReadMember(*top, "z") == kText);
            continue;
        }
        std::string before;
        for (const auto& edit : EditsOf(noise)) {
            before = Archive();
            EXPECT_TRUE(edit(*top) || volume.operations >= failAt);
            if (volume.operations >= failAt) break;
        }
        const bool failed = volume.operations >= failAt;
        const bool changed = Archive() != before;
        volume.failAt = 0;
        const bool goesOn = top->CreateDirectory("later");
        EXPECT_FALSE(failed && changed && goesOn);
        ReadMember(*top, "a");
        top.Reset();
        top = Remount();
        EXPECT_TRUE(!goesOn || (top && DirectoryExists(*top, "later") && ReadMember(*top, "z") == kText));
    } while (volume.operations >= failAt && failAt < 1000);
    EXPECT_GT(failAt, 50);
    EXPECT_LT(failAt, 1000);
}

// An edit that there is no memory for is not made, or is made whole; the next ones are.
TEST_F(ZipTest, SurvivesFailuresOfEveryAllocation) {
    const std::string noise = NoiseBytes(40000);
    const Edits edits = EditsOf(noise);
    long count = 0;
    for (bool failed = true; failed; ++count) {
        SCOPED_TRACE(count);
        ASSERT_LT(count, 10000);
        const RefPointer<Directory> top = Mount(kEdited);
        allocationsLeft = count;
        for (const auto& edit : edits) {
            try {
                edit(*top);
            } catch (const std::bad_alloc&) {
            }
        }
        failed = allocationsLeft == kNoAllocationFails;
        allocationsLeft = kNoAllocationFails;
        ExpectSound(*top, ReadStrictly(Archive()));
        EXPECT_EQ(ReadMember(*top, "z"), kText);
        EXPECT_TRUE(top->CreateDirectory("later"));
    }
    EXPECT_GT(count, 50);
}

// The write-back fails before it changes anything, and then the contents cannot be loaded again.
TEST_F(ZipTest, WritesNothingBackThatItDoesNotHold) {
    const std::string noise = NoiseBytes(40000);
    const RefPointer<Directory> top = Mount(kEdited);
    RefPointer<File> file = OpenMember(*top, "a", kReadWriteStyle);
    ASSERT_TRUE(file && WriteAt(*file, 0, noise.size(), noise.data()));
    volume.failAt = volume.operations + 1;  // making room
    file.Reset();
    volume.failAt = volume.operations + 2;  // behind the local header
    EXPECT_FALSE(OpenMember(*top, "a", kReadWriteStyle));
    EXPECT_EQ(Archive(), kEdited);
    EXPECT_TRUE(WriteMember(*top, "a", noise));
    EXPECT_EQ(ReadStrictly(Archive())["a"], noise);
}

}  // namespace
}  // namespace ZEMA::testing

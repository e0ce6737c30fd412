#include "host/archive/ArchiveRecords.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include "host/archive/DescriptorFile.h"
#include "host/system/FileDescriptor.h"
#include "tests/support/ArchiveBuilder.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

namespace {

class ArchiveRecordsTest : public ::testing::Test {
protected:
    Result<ArchiveRecords::Pointer> Read(const std::string& bytes, bool mending = false) {
        file_ = FileDescriptor(open(folder_.Write("x", bytes).c_str(), O_RDONLY | O_CLOEXEC));
        const RefPointer<File> file(New<DescriptorFile>(file_.Get()));
        return mending ? ArchiveRecords::ReadForMending(file) : ArchiveRecords::Read(file);
    }

    const TemporaryFolder folder_;
    FileDescriptor file_;
};

std::string Le(std::uint64_t value, int width) {
    std::string bytes;
    for (int i = 0; i < width; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
    return bytes;
}

// The same archive with a ZIP64 record and its locator before the end record, which then says nothing itself.
std::string AsZip64(const BuiltArchive& archive) {
    std::string bytes = archive.bytes.substr(0, archive.endRecord);
    bytes += Le(0x06064B50, 4) + Le(44, 8) + Le(45, 2) + Le(45, 2) + Le(0, 8);
    bytes += Le(archive.centralHeaders.size(), 8) + Le(archive.centralHeaders.size(), 8);
    bytes += Le(archive.endRecord - archive.directory, 8) + Le(archive.directory, 8);
    bytes += Le(0x07064B50, 4) + Le(0, 4) + Le(archive.endRecord, 8) + Le(1, 4);
    return bytes + Le(0x06054B50, 4) + Le(0, 4) + Le(0xFFFFFFFF, 4) + Le(0xFFFFFFFF, 4) + Le(0xFFFFFFFF, 4) + Le(0, 2);
}

BuiltArchive TwoMembers() {
    return ArchiveBuilder().Stored("a", "first").Deflated("b/c", "second").Build();
}

}  // namespace

TEST_F(ArchiveRecordsTest, SaysWhyItDoesNotUnderstand) {
    const BuiltArchive good = TwoMembers();
    const auto with = [&good](std::size_t field, std::uint16_t value) {
        return BuiltArchive(good).Set16(good.endRecord + field, value).bytes;
    };
    const std::string foreign = BuiltArchive(good).Set32(good.centralHeaders[1], 0x05054B50).bytes;
    const std::string end(good.bytes.substr(good.endRecord));
    const struct {
        const char* what;
        std::string bytes;
        FailureKind kind;
        const char* text;
    } rows[] = {
        {"a good one", good.bytes, FailureKind::None, ""},
        {"a good one behind something", ArchiveBuilder().Add({.name = "a", .gapBefore = "#!/bin/sh"}).Bytes(),
         FailureKind::None, ""},
        {"none with members", end.substr(0, 8) + std::string(14, '\0'), FailureKind::None, ""},
        {"nothing", "", FailureKind::NoArchive, "it is empty"},
        {"a text", std::string(70000, 'x'), FailureKind::NoArchive, "it is no archive"},
        {"a text that tells of the signature", "an archive ends in PK\5\6, as everybody knows by now",
         FailureKind::NoArchive, "it is no archive"},
        {"cut short", good.bytes.substr(0, good.directory), FailureKind::Damaged,
         "it was cut short: its directory is missing"},
        {"one byte short", good.bytes.substr(0, good.bytes.size() - 1), FailureKind::Damaged,
         "it was cut short: its directory is missing"},
        {"ZIP64", AsZip64(good), FailureKind::Unsupported, "it is a ZIP64 archive"},
        {"the last of several disks", with(4, 1), FailureKind::Unsupported,
         "it is one part of an archive that was split"},
        {"two counts", with(8, 1), FailureKind::Damaged, "its end record counts its members in two ways that differ"},
        {"a count that is not the directory's", BuiltArchive(good).Set32(good.endRecord + 8, 0x00030003).bytes,
         FailureKind::Damaged, "its end record and its directory differ in the number of members"},
        {"something put in front", "front" + good.bytes, FailureKind::Damaged,
         "its directory is not where its end record says"},
        {"something else in the directory", foreign, FailureKind::Damaged,
         "its directory holds something that is no entry"},
        {"an entry longer than the directory", BuiltArchive(good).Set16(good.centralHeaders[1] + 32, 1).bytes,
         FailureKind::Damaged, "the last entry of its directory is cut short"},
        {"the longest comment that is searched",
         ArchiveBuilder().Stored("a", "").Comment(std::string(65513, 'c')).Bytes(), FailureKind::None, ""},
        {"a longer comment", ArchiveBuilder().Stored("a", "").Comment(std::string(65514, 'c')).Bytes(),
         FailureKind::Damaged, "its comment is longer than 65,513 bytes"},
        {"a comment with a signature",
         ArchiveBuilder().Stored("a", "").Comment("PK\5\6, and more than 18 bytes").Bytes(), FailureKind::Damaged,
         "there is a second end record behind its own"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const auto records = Read(row.bytes);
        EXPECT_EQ(static_cast<bool>(records), row.kind == FailureKind::None);
        if (records) continue;
        EXPECT_EQ(records.Why().kind, row.kind);
        EXPECT_EQ(records.Why().text, row.text);
    }
}

// For mending, entries are where they are and not where they say.
TEST_F(ArchiveRecordsTest, FindsMembersOfArchivesToBeMended) {
    const BuiltArchive good = TwoMembers();
    ArchiveMember wide{.name = "b/c", .contents = "second"};
    wide.centralExtra = Le(1, 2) + Le(24, 2) + Le(6, 8) + Le(6, 8) + Le(36, 8);
    BuiltArchive zip64 = ArchiveBuilder().Stored("a", "first").Add(wide).Build();
    ASSERT_EQ(zip64.localHeaders[1], 36u);
    for (const std::size_t field : {20u, 24u, 42u}) zip64.Set32(zip64.centralHeaders[1] + field, 0xFFFFFFFF);
    const struct {
        const char* what;
        std::string bytes;
        std::uint64_t offset;
    } rows[] = {
        {"as they say", good.bytes, 36},
        {"something put in front", "front" + good.bytes, 41},
        {"another count", BuiltArchive(good).Set32(good.endRecord + 8, 0x00030003).bytes, 36},
        {"another count in one place", BuiltArchive(good).Set16(good.endRecord + 8, 9).bytes, 36},
        {"ZIP64", AsZip64(zip64), 36},
        {"ZIP64 behind something", "front" + AsZip64(zip64), 41},
        {"a signature in the comment",
         good.bytes.substr(0, good.endRecord + 20) + Le(22, 2) + "PK\5\6" + std::string(18, 'x'), 36},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const auto records = Read(row.bytes, true);
        ASSERT_TRUE(records) << records.Why().text;
        ASSERT_EQ((*records)->Count(), 2u);
        EXPECT_EQ((*records)->Entry(1).name, "b/c");
        EXPECT_EQ((*records)->Entry(1).uncompressedSize, 6u);
        EXPECT_EQ((*records)->Entry(1).localHeaderOffset, row.offset);
    }
}

}  // namespace ZEMA::testing

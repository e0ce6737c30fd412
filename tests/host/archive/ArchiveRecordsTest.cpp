#include "host/archive/ArchiveRecords.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include "host/archive/DescriptorFile.h"
#include "host/system/FileDescriptor.h"
#include "tests/support/ArchiveBuilder.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

TEST(ArchiveRecords, SaysWhyItDoesNotUnderstand) {
    const BuiltArchive good = ArchiveBuilder().Stored("a", "first").Deflated("b/c", "second").Build();
    const auto with = [&good](std::size_t field, std::uint16_t value) {
        return BuiltArchive(good).Set16(good.endRecord + field, value).bytes;
    };
    const std::string foreign = BuiltArchive(good).Set32(good.centralHeaders[1], 0x05054B50).bytes;
    const std::string end(good.bytes.substr(good.endRecord));
    using enum FailureKind;
    const struct {
        const char* what;
        std::string bytes;
        FailureKind kind;
        const char* text;
    } rows[] = {
        {"a good one", good.bytes, None, ""},
        {"a good one behind something", ArchiveBuilder().Add({.name = "a", .gapBefore = "#!/bin/sh"}).Bytes(), None,
         ""},
        {"none with members", end.substr(0, 8) + std::string(14, '\0'), None, ""},
        {"nothing", "", NoArchive, "it is empty"},
        {"a text", std::string(70000, 'x'), NoArchive, "it is no archive"},
        {"a text that tells of the signature", "an archive ends in PK\5\6, as everybody knows by now", NoArchive,
         "it is no archive"},
        {"cut short", good.bytes.substr(0, good.directory), Damaged, "it was cut short: its directory is missing"},
        {"the last of several disks", with(4, 1), Unsupported, "it is one part of an archive that was split"},
        {"two counts", with(8, 1), Damaged, "its end record counts its members in two ways that differ"},
        {"a count that is not the directory's", BuiltArchive(good).Set32(good.endRecord + 8, 0x00030003).bytes, Damaged,
         "its end record and its directory differ in the number of members"},
        {"an end record that points behind its directory",
         BuiltArchive(good).Set32(good.endRecord + 16, static_cast<std::uint32_t>(good.directory) + 5).bytes, Damaged,
         "its directory is not where its end record says"},
        {"something put in front", "front" + good.bytes, Damaged, "its directory is not where its end record says"},
        {"something else in the directory", foreign, Damaged, "its directory holds something that is no entry"},
        {"an entry longer than the directory", BuiltArchive(good).Set16(good.centralHeaders[1] + 32, 1).bytes, Damaged,
         "the last entry of its directory is cut short"},
        {"the longest comment that is searched",
         ArchiveBuilder().Stored("a", "").Comment(std::string(65513, 'c')).Bytes(), None, ""},
        {"a longer comment", ArchiveBuilder().Stored("a", "").Comment(std::string(65514, 'c')).Bytes(), Damaged,
         "its comment is longer than 65,513 bytes"},
        {"a comment with a signature",
         ArchiveBuilder().Stored("a", "").Comment("PK\5\6, and more than 18 bytes").Bytes(), Damaged,
         "there is a second end record behind its own"},
    };
    const TemporaryFolder folder;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const FileDescriptor file(open(folder.Write("x", row.bytes).c_str(), O_RDONLY | O_CLOEXEC));
        const auto records = ArchiveRecords::Read(New<DescriptorFile>(file.Get()));
        EXPECT_EQ(static_cast<bool>(records), row.kind == None);
        if (records) continue;
        EXPECT_EQ(records.Why().kind, row.kind);
        EXPECT_EQ(records.Why().text, row.text);
    }
}

}  // namespace ZEMA::testing

#include "host/archive/ArchiveMend.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include "host/archive/ArchivePass.h"
#include "host/archive/DescriptorFile.h"
#include "host/system/FileDescriptor.h"
#include "tests/support/ArchiveBuilder.h"
#include "tests/support/ArchiveTools.h"
#include "tests/support/StrictArchive.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

namespace {

class ArchiveMendTest : public ::testing::Test {
protected:
    // "fine", or the first fault, or the first obstacle behind "left: ".
    std::string Mend(const std::string& name, const MendOptions& options = {}) const {
        const Result<MendReport> report = MendArchive(folder_ / name, options);
        if (!report) return "failed: " + report.Why().text;
        if (!report->obstacles.empty()) return "left: " + report->obstacles[0];
        return report->faults.empty() ? "fine" : report->faults[0];
    }

    const TemporaryFolder folder_;
};

BuiltArchive WithSecond(ArchiveMember second) {
    second.name = "b";
    return ArchiveBuilder().Stored("a", "first").Add(second).Stored("c", "third").Build();
}

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

const std::map<std::string, std::string> kContents = {{"a", "first"}, {"b", "second"}, {"c", "third"}};

}  // namespace

TEST_F(ArchiveMendTest, PutsRightWhatTheDirectoryKnows) {
    const BuiltArchive good = WithSecond({.contents = "second"});
    BuiltArchive local64 = WithSecond({.contents = "second", .localExtra = Le(1, 2) + Le(16, 2) + Le(6, 8) + Le(6, 8)});
    BuiltArchive central64 =
        WithSecond({.contents = "second", .centralExtra = Le(1, 2) + Le(24, 2) + Le(6, 8) + Le(6, 8) + Le(36, 8)});
    for (const std::size_t field : {20u, 24u, 42u}) central64.Set32(central64.centralHeaders[1] + field, 0xFFFFFFFF);
    for (const std::size_t field : {18u, 22u}) local64.Set32(local64.localHeaders[1] + field, 0xFFFFFFFF);
    const struct {
        const char* what;
        std::string bytes;
        const char* outcome;
    } rows[] = {
        {"sizes in both places", WithSecond({.contents = "second", .sums = ArchiveMember::Sums::Both}).bytes,
         "'b' in it: it has its sizes beside flag bit 3"},
        {"a checksum that the local header has not", BuiltArchive(good).Set32(good.localHeaders[1] + 14, 0).bytes,
         "'b' in it: its local header and the directory disagree"},
        {"flags that the local header has not", BuiltArchive(good).Set16(good.centralHeaders[1] + 8, 0x0800).bytes,
         "'b' in it: its local header and the directory disagree"},
        {"ZIP64 in the local header", local64.bytes, "'b' in it: its local header is one of ZIP64"},
        {"a wrong count", BuiltArchive(good).Set32(good.endRecord + 8, 0x00090008).bytes,
         "its end record counts its members in two ways that differ"},
        {"something put in front", "#!/bin/sh\n" + good.bytes, "its directory is not where its end record says"},
        {"ZIP64", AsZip64(central64), "it is a ZIP64 archive"},
        {"ZIP64 behind something", "#!/bin/sh\n" + AsZip64(central64), "it is a ZIP64 archive"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        folder_.Write("x", row.bytes);
        EXPECT_EQ(Mend("x", {.dryRun = true}), row.outcome);
        EXPECT_EQ(folder_.Read("x"), row.bytes);
        EXPECT_EQ(Mend("x"), row.outcome);
        EXPECT_EQ(ReadStrictly(folder_.Read("x")), kContents);
        EXPECT_EQ(folder_.Read("x").starts_with("#!"), row.bytes.starts_with("#!"));
        EXPECT_EQ(Mend("x"), "fine");
    }
}

TEST_F(ArchiveMendTest, LeavesAloneWhatIsFineAndWhatItCannotMend) {
    const BuiltArchive good = WithSecond({.contents = "second"});
    const auto broken = [&good] { return BuiltArchive(good).Set32(good.localHeaders[0] + 14, 0); };  // needs mending
    const auto second = [&](std::size_t field, std::uint16_t value) {
        return broken().Set16(good.centralHeaders[1] + field, value).bytes;
    };
    const std::string longComment(65535, 'c');
    const BuiltArchive gap = WithSecond({.contents = "second", .gapBefore = "mine"});
    const struct {
        const char* what;
        std::string bytes;
        const char* outcome;
        const char* dropped;  // the outcome with --drop
    } rows[] = {
        {"a good one", good.bytes, "fine", "fine"},
        {"a good one behind something", ArchiveBuilder().Add({.name = "a", .gapBefore = "front"}).Bytes(), "fine",
         "fine"},
        {"encryption", second(8, 1), "left: 'b' in it: it is encrypted", nullptr},
        {"Deflate64", second(10, 9), "left: 'b' in it: it is packed by Deflate64", nullptr},
        {"a method that nobody knows", second(10, 77), "left: 'b' in it: it is packed by method 77", nullptr},
        {"a checksum that is wrong", second(16, 7),
         "left: 'b' in it: it is damaged: its contents do not have their size and checksum", nullptr},
        {"a missing member", second(44, 0x7000), "left: 'b' in it: its local header is missing", nullptr},
        {"a name that is there twice", broken().Set16(good.centralHeaders[1] + 45, 'a' << 8).bytes,
         "left: 'a' in it is there more than once", nullptr},
        {"a name with an empty part", BuiltArchive(good).Set16(good.centralHeaders[1] + 45, '/' << 8).bytes,
         "left: '/' in it has a name with an empty part, which no archive may hold", nullptr},
        {"bytes of nobody", BuiltArchive(gap).Set32(gap.localHeaders[0] + 14, 0).bytes,
         "left: there are bytes in it that belong to no member, at 36",
         "'a' in it: its local header and the directory disagree"},
        {"a comment that is too long", ArchiveBuilder().Stored("a", "").Comment(longComment).Bytes(),
         "left: its comment is longer than 65,513 bytes; --drop leaves it out",
         "its comment is longer than 65,513 bytes"},
        {"a comment that ends archives",
         ArchiveBuilder().Stored("a", "").Comment("PK\5\6" + std::string(18, 'c')).Bytes(),
         "left: its comment looks like an end record; --drop leaves it out",
         "there is a second end record behind its own"},
        {"a comment that names a directory",
         ArchiveBuilder().Stored("a", "").Comment("PK\5\6" + Le(0, 8) + Le(10, 8) + Le(0, 2)).Bytes(),
         "left: its comment looks like an end record; --drop leaves it out",
         "its directory is not where its end record says"},
        {"no archive", "text", "failed: it is no archive", nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        folder_.Write("x", row.bytes);
        EXPECT_EQ(Mend("x"), row.outcome);
        EXPECT_EQ(folder_.Read("x"), row.bytes);
        EXPECT_EQ(Mend("x", {.drop = true}), row.dropped != nullptr ? row.dropped : row.outcome);
        if (row.dropped == nullptr) {
            EXPECT_EQ(folder_.Read("x"), row.bytes);
        } else {
            EXPECT_NO_THROW(ReadStrictly(folder_.Read("x")));
        }
    }
}

// What programs write that the storage tree does not take. Each is read by that program again.
TEST_F(ArchiveMendTest, MendsTheArchivesOfOtherPrograms) {
    const std::string python = "python3 -c \"import zipfile,sys; zipfile.ZipFile('x.zip','w',";
    const std::string commands[] = {
        "7z a -tzip -mm=bzip2 x.zip a b c",
        "7z a -tzip -mm=lzma x.zip a b c",
        "7z a -tzip -mm=ppmd x.zip a b c",
        "7z a -tzip -mm=xz x.zip a b c",
        "bsdtar --format zip -cf x.zip a b c",
        "zip -fz x.zip a b c",
        "zip -fz - - <a >x.zip",
        python + "14).write('a')\"",
        python + "8).open('a','w',force_zip64=True).write(open('a','rb').read())\"",
    };
    for (const char* name : {"a", "b", "c"}) folder_.Write(name, std::string(70000, name[0]) + NoiseBytes(999));
    for (const std::string& command : commands) {
        SCOPED_TRACE(command);
        if (!HaveTool(command.substr(0, command.find(' ')))) GTEST_SKIP() << "it is not installed";
        std::filesystem::remove(folder_ / "x.zip");
        if (!RunIn(folder_.Path().string(), command)) continue;  // not every version knows every method
        EXPECT_NE(Mend("x.zip").substr(0, 4), "left");
        const FileDescriptor file(open((folder_ / "x.zip").c_str(), O_RDONLY | O_CLOEXEC));
        EXPECT_TRUE(IsFineArchive(*New<DescriptorFile>(file.Get())));
        const auto contents = ReadStrictly(folder_.Read("x.zip"));
        EXPECT_FALSE(contents.empty());
        for (const auto& [name, bytes] : contents) EXPECT_EQ(bytes, folder_.Read(name == "-" ? "a" : name));
        EXPECT_EQ(Mend("x.zip"), "fine");
        EXPECT_EQ(ToolsThatRefuse(folder_ / "x.zip"), std::vector<std::string>());
    }
}

}  // namespace ZEMA::testing

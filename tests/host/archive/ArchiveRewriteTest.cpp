#include "host/archive/ArchiveRewrite.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "host/archive/DescriptorFile.h"
#include "host/system/FileDescriptor.h"
#include "tests/support/ArchiveBuilder.h"
#include "tests/support/ArchiveTools.h"
#include "tests/support/StrictArchive.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

namespace {

namespace fs = std::filesystem;
using Rewrite = std::unique_ptr<ArchiveRewrite>;
using Sums = ArchiveMember::Sums;

ContentsReader Text(std::string text) {
    return [text](void* buffer, std::size_t size) mutable -> Result<std::size_t> {
        const std::size_t count = text.copy(static_cast<char*>(buffer), size);
        text.erase(0, count);
        return count;
    };
}

// All fields of an entry but its place.
std::string Fields(const ArchiveEntry& entry) {
    std::string text(entry.name);
    for (const std::uint64_t field :
         {std::uint64_t{entry.versionMadeBy}, std::uint64_t{entry.versionNeeded}, std::uint64_t{entry.flags},
          std::uint64_t{entry.method}, std::uint64_t{entry.time}, std::uint64_t{entry.date}, std::uint64_t{entry.crc32},
          entry.compressedSize, entry.uncompressedSize, std::uint64_t{entry.internalAttributes},
          std::uint64_t{entry.externalAttributes}}) {
        text += " " + std::to_string(field);
    }
    return text + " extra " + std::string(entry.extra) + " comment " + std::string(entry.comment);
}

class ArchiveRewriteTest : public ::testing::Test {
protected:
    Rewrite Begin(const std::string& bytes, const ArchiveRewrite::Options& options = {}) {
        folder_.Write("x", before_ = bytes);
        Result<Rewrite> rewrite = ArchiveRewrite::Begin(folder_ / "x", options);
        EXPECT_TRUE(rewrite) << rewrite.Why().text;
        return rewrite ? std::move(*rewrite) : nullptr;
    }

    // What the commit says; the archive is untouched unless it is the empty text.
    std::string Commit(const Rewrite& rewrite) {
        const Failure failure = rewrite->Commit();
        if (failure) {
            EXPECT_EQ(folder_.Read("x"), before_);
        }
        return failure.text;
    }

    ArchiveRecords::Pointer Records() {
        file_ = FileDescriptor(open((folder_ / "x").c_str(), O_RDONLY | O_CLOEXEC));
        return *ArchiveRecords::Read(New<DescriptorFile>(file_.Get()));
    }

    const TemporaryFolder folder_;
    std::string before_;
    FileDescriptor file_;
};

const std::string kUnicodePath("\x75\x70\3\0\1ab", 7);
const std::string kForeign("\xFE\xCA\1\0z", 5);
const std::string kZip64("\1\0\x10\0\5\0\0\0\0\0\0\0\5\0\0\0\0\0\0\0", 20);

}  // namespace

TEST_F(ArchiveRewriteTest, KeepsAllOfWhatStays) {
    ArchiveBuilder builder;
    builder.Add({.name = "plain",
                 .contents = "12345",
                 .localExtra = kZip64 + kForeign,
                 .centralExtra = kForeign,
                 .gapBefore = "#!/bin/sh\n"});
    builder.Add({.name = "gone", .contents = "gone"});
    builder.Add({.name = "behind", .contents = "behind", .sums = Sums::Behind, .gapBefore = std::string(9, '\0')});
    builder.Add({.name = "signed", .contents = std::string(99999, 's'), .deflated = true, .sums = Sums::BehindSigned});
    builder.Add({.name = "wide", .contents = "wide", .sums = Sums::BehindWide, .comment = "a comment"});
    builder.Add({.name = "both", .contents = "both", .sums = Sums::Both, .versionMadeBy = 0x0014});
    builder.Add({.name = "secret", .contents = "secret", .sums = Sums::BehindWide, .flags = 1});
    builder.Add(
        {.name = "old", .contents = "moved", .localExtra = kUnicodePath + kForeign, .centralExtra = kUnicodePath});
    builder.Folder("folder/").Comment("of the archive").DirectoryOrder({8, 0, 1, 2, 3, 4, 5, 6, 7});
    BuiltArchive built = builder.Build();
    for (const std::size_t field : {18u, 22u}) built.Set32(built.localHeaders[0] + field, 0xFFFFFFFF);

    const Rewrite rewrite = Begin(built.bytes);
    std::vector<std::string> expected;
    for (std::size_t index = 0; index < rewrite->Records()->Count(); ++index) {
        ArchiveEntry entry = rewrite->Records()->Entry(index);
        if (!entry.IsEncrypted()) entry.flags = static_cast<std::uint16_t>(entry.flags & ~8);
        if (entry.name == "gone") {
            rewrite->Remove(index);
            continue;
        }
        if (entry.name == "old") {
            ASSERT_FALSE(rewrite->Rename(index, "new/n\xC3\xA4me"));
            entry.name = "new/n\xC3\xA4me", entry.extra = "", entry.flags = 0x0800;
        }
        expected.push_back(Fields(entry));
        if (entry.name == "wide") {
            ASSERT_FALSE(rewrite->AddPacked(rewrite->Records(), index, "once more"));
        }
    }
    ASSERT_FALSE(
        rewrite->AddFile({.name = "added", .modifiedSeconds = 1, .mode = 0644}, Text(std::string(300000, 'n'))));
    rewrite->AddFolder({.name = "n\xC3\xB6/", .modifiedSeconds = 1700000000, .mode = 04750});
    ASSERT_EQ(Commit(rewrite), "");

    const auto records = Records();
    for (std::size_t index = 0; index < expected.size(); ++index)
        EXPECT_EQ(Fields(records->Entry(index)), expected[index]);
    const ArchiveEntry added = records->Entry(expected.size() + 2);
    EXPECT_EQ(added.externalAttributes, 0040750u << 16 | 0x10);
    EXPECT_EQ(added.versionMadeBy, 0x0314);
    EXPECT_EQ(added.flags, 0x0800);
    EXPECT_EQ(added.ModifiedSeconds(), 1700000000);
    EXPECT_EQ(records->Trailer().substr(2), "of the archive");
    const std::string bytes = folder_.Read("x");
    EXPECT_EQ(bytes.substr(0, 10), "#!/bin/sh\n");
    EXPECT_NE(bytes.find("secretPK\7\10"), std::string::npos) << "its descriptor belongs to the encryption";
    EXPECT_EQ(bytes.find("behindPK\7\10"), std::string::npos);
    std::map<std::string, std::string> contents = {{"plain", "12345"}, {"folder/", ""}, {"n\xC3\xB6/", ""}};
    for (const char* name : {"behind", "wide", "both", "secret"}) contents[name] = name;
    contents.insert({{"new/n\xC3\xA4me", "moved"},
                     {"once more", "wide"},
                     {"signed", std::string(99999, 's')},
                     {"added", std::string(300000, 'n')}});
    EXPECT_EQ(ReadStrictly(bytes), contents);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_.Path()), fs::directory_iterator()), 1);
}

// One thing is broken in the member "b". Nothing is lost by removing it.
TEST_F(ArchiveRewriteTest, RefusesToLoseWhatItCannotKeep) {
    const auto set16 = [](std::size_t local, std::size_t central, std::uint16_t value) {
        return [=](BuiltArchive& archive) {
            if (local != 0) archive.Set16(archive.localHeaders[1] + local, value);
            if (central != 0) archive.Set16(archive.centralHeaders[1] + central, value);
        };
    };
    const std::string disagree = "its local header and the directory disagree";
    const std::string tied = "it is encrypted in a way that ties it to its place";
    const struct {
        const char* what;
        std::function<void(BuiltArchive&)> damage;
        std::string problem;
    } rows[] = {
        {"no local header", set16(2, 0, 0), "its local header is missing"},
        {"another method", set16(8, 0, 8), disagree},
        {"other flags", set16(6, 0, 2), disagree},
        {"another checksum", set16(14, 0, 1), disagree},
        {"another size", set16(22, 0, 1), disagree},
        {"another packed size", set16(0, 20, 5), disagree},
        {"data behind the file", set16(20, 22, 1), "its data reach behind the end of the archive"},
        {"headers that are masked", set16(6, 8, 0x2000), tied},
        {"strong encryption", set16(6, 8, 0x0041), tied},
        {"ZIP64 in the directory", [](BuiltArchive& archive) { archive.Set16(archive.centralHeaders[1] + 46 + 1, 1); },
         "its directory entry is one of ZIP64"},
        {"a descriptor that does not fit", set16(6, 8, 9), "its data descriptor and the directory disagree"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        BuiltArchive built =
            ArchiveBuilder()
                .Stored("a", "first")
                .Add({.name = "b", .contents = "second", .localExtra = kForeign, .centralExtra = kForeign})
                .Stored("c", "third")
                .Build();
        row.damage(built);
        Rewrite rewrite = Begin(built.bytes);
        ASSERT_FALSE(rewrite->Rename(0, "renamed"));
        EXPECT_EQ(Commit(rewrite), "'b' in it: " + row.problem);
        rewrite.reset();
        rewrite = Begin(built.bytes);
        rewrite->Remove(1);
        EXPECT_EQ(Commit(rewrite), "");
        EXPECT_EQ(ReadStrictly(folder_.Read("x")),
                  (std::map<std::string, std::string>{{"a", "first"}, {"c", "third"}}));
    }
}

// Here the whole archive is in the way, whatever is done to the first member.
TEST_F(ArchiveRewriteTest, RefusesToLoseWhatBelongsToNoMember) {
    BuiltArchive unlisted = ArchiveBuilder().Stored("a", "1").Stored("b", "2").Build();
    const std::size_t entry = unlisted.endRecord - unlisted.centralHeaders[1];
    unlisted.Set32(unlisted.endRecord + 8, 0x00010001)
        .Set32(unlisted.endRecord + 12, static_cast<std::uint32_t>(entry));
    unlisted.bytes.erase(unlisted.centralHeaders[1], entry);
    const std::string between = ArchiveBuilder().Stored("a", "1").Add({.name = "b", .gapBefore = "mine"}).Bytes();
    for (const std::string& bytes : {between, unlisted.bytes}) {
        const Rewrite rewrite = Begin(bytes);
        rewrite->Remove(0);
        EXPECT_EQ(Commit(rewrite), "there are bytes in it that belong to no member, at 32");
    }
}

TEST_F(ArchiveRewriteTest, TakesOverlappingMembersApart) {
    const std::string tooMuch = "its members share bytes, and written apart they would take more than twice its size";
    for (const std::size_t count : {2u, 9u}) {
        BuiltArchive built = ArchiveBuilder().Stored("kernel", NoiseBytes(1000)).Build();
        std::string entry = built.bytes.substr(built.directory, built.endRecord - built.directory);
        for (std::size_t i = 1; i < count; ++i) {
            entry.replace(46, 6, "copy" + std::to_string(10 + i));
            built.bytes.insert(built.endRecord, entry);
        }
        const std::size_t end = built.bytes.size() - 22;
        built.Set(end + 8, count, 2).Set(end + 10, count, 2).Set(end + 12, entry.size() * count, 4);
        const Rewrite rewrite = Begin(built.bytes);
        ASSERT_FALSE(rewrite->Rename(0, "core"));
        EXPECT_EQ(Commit(rewrite), count == 2 ? "" : tooMuch);
        if (count != 2) continue;
        EXPECT_EQ(ReadStrictly(folder_.Read("x")),
                  (std::map<std::string, std::string>{{"core", NoiseBytes(1000)}, {"copy11", NoiseBytes(1000)}}));
    }
}

TEST_F(ArchiveRewriteTest, RenamesWithoutMixingEncodings) {
    const std::string utf8 = "\xC3\xA4", other = "\x84";
    const struct {
        const char* what;
        std::string before;
        std::uint16_t flags;
        std::string comment;
        std::string after;
        int flagged;  // 2 where it is refused
    } rows[] = {
        {"ASCII", "a", 0, "", "b", 0},
        {"a flag stays for the comment", "a", 0x0800, utf8, "b", 1},
        {"UTF-8", "a", 0, "", utf8, 1},
        {"a folder of unknown bytes", other + "/a", 0, "", other + "/b", 0},
        {"UTF-8 in a folder of unknown bytes", other + "/a", 0, "", other + "/" + utf8, 2},
        {"UTF-8 beside a comment of unknown bytes", "a", 0, other, utf8, 2},
        {"unknown bytes beside a comment in UTF-8", "a", 0x0800, utf8, other, 2},
        {"a name that is too long", "a", 0, "", std::string(65536, 'b'), 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const Rewrite rewrite =
            Begin(ArchiveBuilder().Add({.name = row.before, .flags = row.flags, .comment = row.comment}).Bytes());
        const Failure failure = rewrite->Rename(0, row.after);
        EXPECT_EQ(static_cast<bool>(failure), row.flagged == 2);
        if (failure) continue;
        EXPECT_EQ(Commit(rewrite), "");
        EXPECT_EQ(Records()->Entry(0).flags, row.flagged == 1 ? 0x0800 : 0);
    }
}

TEST_F(ArchiveRewriteTest, DoesNotReplaceWhatSomebodyElseChanged) {
    for (const char* change : {"touch x", "cp x y && mv y x", "rm x"}) {
        SCOPED_TRACE(change);
        const Rewrite rewrite = Begin(ArchiveBuilder().Stored("a", "first").Bytes());
        ASSERT_TRUE(RunIn(folder_.Path().string(), change));
        if (!fs::exists(folder_ / "x")) before_ = "";
        EXPECT_EQ(Commit(rewrite), "somebody else has changed it meanwhile");
    }
    const Result<Rewrite> created = ArchiveRewrite::BeginNew(folder_ / "x", {});
    folder_.Write("x", before_ = "somebody else's");
    EXPECT_EQ(Commit(*created), "file exists");
}

}  // namespace ZEMA::testing

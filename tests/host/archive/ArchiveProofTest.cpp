#include <fcntl.h>
#include <gtest/gtest.h>

#include "host/archive/ArchivePass.h"
#include "host/archive/DescriptorFile.h"
#include "host/system/FileDescriptor.h"
#include "tests/support/ArchiveBuilder.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

namespace {

FileDescriptor Open(const std::string& path) {
    return FileDescriptor(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
}

// Keeps all members of the archive, gives the first one another name, and adds a folder.
ArchivePlan PlanFor(const ArchiveRecords::Pointer& records) {
    ArchivePlan plan;
    plan.old = records;
    plan.keptCount = records->Count();
    for (std::uint32_t index = 0; index < records->Count(); ++index) plan.members.push_back({records, index, nullptr});
    plan.members[0].change = std::make_unique<MemberChange>(MemberChange{.name = "renamed"});
    plan.members.push_back({nullptr, 0, std::make_unique<MemberChange>(MemberChange{.name = "new/", .mode = 0755})});
    return plan;
}

// The bytes, other than those of the new folder's date, that can be another one and the archive passes.
std::vector<std::size_t> Unseen(const std::string& built, std::size_t step) {
    const TemporaryFolder folder;
    const FileDescriptor old = Open(folder.Write("old", built));
    const FileDescriptor file = Open(folder / "new");
    const auto records = ArchiveRecords::Read(New<DescriptorFile>(old.Get()));
    const ArchivePlan plan = PlanFor(*records);
    const auto layout = LayOutArchive(plan);
    EXPECT_TRUE(layout && !WriteArchive(plan, *layout, file.Get()) && !ProveArchive(plan, *layout, file.Get()));
    std::vector<std::size_t> unseen;
    const std::string bytes = folder.Read("new");
    for (std::size_t at = 0; at < bytes.size(); at += step) {
        const char other = static_cast<char>(bytes[at] ^ 4);
        EXPECT_TRUE(WriteAllAt(file.Get(), at, 1, &other));
        if (!ProveArchive(plan, *layout, file.Get())) unseen.push_back(at);
        EXPECT_TRUE(WriteAllAt(file.Get(), at, 1, &bytes[at]));
    }
    return unseen;
}

}  // namespace

TEST(ArchiveProof, SeesEveryByteThatIsWrong) {
    ArchiveBuilder builder;
    builder.Add(
        {.name = "a", .contents = "first", .localExtra = std::string("\xFE\xCA\1\0z", 5), .gapBefore = "front"});
    builder.Add({.name = "b", .contents = "second", .deflated = true, .comment = "of b"});
    builder.Add({.name = "c", .contents = "secret", .sums = ArchiveMember::Sums::BehindSigned, .flags = 1});
    EXPECT_EQ(Unseen(builder.Comment("of all").Bytes(), 1), std::vector<std::size_t>());
    const std::string large = ArchiveBuilder().Stored("a", NoiseBytes(900000)).Stored("b", NoiseBytes(700000)).Bytes();
    EXPECT_EQ(Unseen(large, 99991), std::vector<std::size_t>()) << "in whichever piece of a member";
}

}  // namespace ZEMA::testing

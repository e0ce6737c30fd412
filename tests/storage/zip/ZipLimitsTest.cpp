// The largest members, offsets and counts of the format.
#include <fstream>
#include <functional>
#include <new>

#include "storage/zip/ZipFormat.h"
#include "tests/storage/zip/ZipTest.h"
#include "tests/support/StrictArchive.h"

namespace ZEMA::testing {
namespace {

// The archive behind as many zeros as leave `room` bytes before the end record would pass the last offset.
void PutFar(MemoryNode& file, BuiltArchive built, std::uint64_t room) {
    file.zeros = kMaxOffset - built.endRecord - room;
    const auto shift = static_cast<std::uint32_t>(file.zeros);
    for (std::size_t i = 0; i < built.centralHeaders.size(); ++i) {
        built.Set32(built.centralHeaders[i] + kCentralLocalHeaderOffset,
                    static_cast<std::uint32_t>(built.localHeaders[i]) + shift);
    }
    built.Set32(built.endRecord + kEndDirectoryOffset, static_cast<std::uint32_t>(built.directory) + shift);
    file.bytes = built.bytes;
}

TEST_F(ZipTest, NoOffsetPassesThirtyTwoBits) {
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
        PutFar(Put("a.wqf", ""), built, row.room);
        const std::string before = Archive();
        RefPointer<Directory> top = Remount();
        ASSERT_TRUE(top);
        row.edit(*top);
        EXPECT_EQ(Archive() != before, row.changes);
        EXPECT_TRUE(row.changes || ReadMember(*top, "a") == kText);
        EXPECT_EQ(ReadMember(*top, "b"), "bbb");
        top.Reset();
        top = Remount();
        ASSERT_TRUE(top);
        EXPECT_EQ(ReadMember(*top, "b"), "bbb");
    }
}

TEST_F(ZipTest, OpensNoDataBehindThirtyTwoBits) {
    BuiltArchive built = ArchiveBuilder().Stored("m", "abc").Build();
    PutFar(Put("a.wqf", ""), built.Set16(kLocalExtraLength, 0xFFFF), 0);
    const RefPointer<Directory> top = Remount();
    ASSERT_TRUE(top);
    EXPECT_EQ(ReadMember(*top, "m"), kNotOpened) << "nor what stands at the start, where the offset wraps around to";
}

TEST_F(ZipTest, HoldsNoMoreThanTheCountCan) {
    ArchiveBuilder builder;
    for (int i = 0; i < 65534; ++i) builder.Stored("m" + std::to_string(i * 7919 % 65534), std::to_string(i));
    const RefPointer<Directory> top = Mount(builder.Bytes());
    ASSERT_TRUE(top);
    EXPECT_EQ(ReadMember(*top, "M7919"), "1");
    EXPECT_TRUE(top->CreateDirectory("one more"));
    const std::string full = Archive();
    EXPECT_FALSE(top->CreateDirectory("too many") || DirectoryExists(*top, "too many"));
    EXPECT_EQ(Archive(), full);
    EXPECT_EQ(ReadStrictly(full).size(), 65535u);
    EXPECT_TRUE(top->Remove("one more", false) && top->CreateDirectory("too many"));
}

// What a member of 300 MiB may take in all, in MiB: not twice its size. The thread sanitizer keeps some bytes for each,
// the address sanitizer 256 MiB of what was released.
#if defined(__SANITIZE_THREAD__)
constexpr std::size_t kMoreMemory = 5 * 450;
#elif defined(__SANITIZE_ADDRESS__)
constexpr std::size_t kMoreMemory = 450 + 256;
#else
constexpr std::size_t kMoreMemory = 450;
#endif

// The most memory in use since the last call, in MiB; what is in use now becomes the most.
std::size_t TakePeakMemory() {
    std::ifstream status("/proc/self/status");
    std::string word;
    std::size_t kilobytes = 0;
    while (status >> word && word != "VmHWM:") continue;
    status >> kilobytes;
    std::ofstream("/proc/self/clear_refs") << 5;
    return kilobytes / 1024;
}

TEST_F(ZipTest, CarriesThreeHundredMebibytes) {
    constexpr std::size_t kPiece = 1 << 20;
    const auto piece = [](std::uint32_t number) {
        std::string bytes(kPiece, 'p');
        StoreU32(bytes.data() + number * 1000, number);
        return bytes;
    };
    const RefPointer<Directory> top = Mount("");
    TakePeakMemory();
    std::size_t before = TakePeakMemory();
    RefPointer<File> file(top->OpenFile("large", &kReadWriteStyle, true, nullptr));
    for (std::uint32_t i = 0; i < 300; ++i) ASSERT_TRUE(Write(*file, kPiece, piece(i).data()));
    file.Reset();
    EXPECT_LT(TakePeakMemory(), before + kMoreMemory);

    before = TakePeakMemory();
    file = OpenMember(*top, "large", kReadStyle);
    ASSERT_TRUE(file);
    std::string read(kPiece, '\0');
    for (std::uint32_t i = 0; i < 300; ++i) ASSERT_TRUE(Read(*file, kPiece, read.data()) && read == piece(i));
    EXPECT_LT(TakePeakMemory(), before + kMoreMemory);
}

// Names of nothing but slashes and single letters: without a limit two megabytes take two hundred.
TEST_F(ZipTest, RunsOutOfMemoryAtAMillionNames) {
    const auto mountDeep = [&](int members) {
        ArchiveBuilder builder;
        for (int member = 0; member < members; ++member) {
            std::string name = std::to_string(100 + member);
            while (name.size() < kMaxNameLength - 1) name += "/a";
            builder.Stored(name, "");
        }
        return Mount(builder.Bytes());
    };
    EXPECT_TRUE(mountDeep(2));
    EXPECT_THROW(mountDeep(31), std::bad_alloc);
}

}  // namespace
}  // namespace ZEMA::testing

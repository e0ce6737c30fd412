#include "host/archive/OverlayFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "host/system/FileDescriptor.h"
#include "tests/support/ArchiveBuilder.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {

namespace {

std::string BytesOf(File& file) {
    std::string bytes(GetSize(file), '?');
    EXPECT_TRUE(ReadAt(file, 0, bytes.size(), bytes.data()));
    return bytes;
}

class OverlayFileTest : public ::testing::Test {
protected:
    const TemporaryFolder folder_;
    const std::string before_ = NoiseBytes(1000);
    const FileDescriptor original_{open(folder_.Write("original", before_).c_str(), O_RDONLY | O_CLOEXEC)};
    const FileDescriptor copy_{open(folder_.Write("copy", "").c_str(), O_RDWR | O_CLOEXEC)};
};

}  // namespace

// Random changes beside a text in memory, up to the completed copy.
TEST_F(OverlayFileTest, ReadsAsTheOriginalWithItsChanges) {
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        std::string expected = before_;
        folder_.Write("copy", "");
        const RefPointer<OverlayFile> file = New<OverlayFile>(original_.Get(), copy_.Get());
        for (int step = 0; step < 60; ++step) {
            const std::size_t offset = random() % (expected.size() + 1);
            const std::string bytes = NoiseBytes(random() % 40, static_cast<std::uint32_t>(random()));
            if (random() % 4 == 0) {
                const std::size_t size = random() % 1200;
                expected.resize(size, '\0');
                ASSERT_TRUE(SetSize(*file, size));
            } else {
                expected.replace(offset, bytes.size(), bytes);
                ASSERT_TRUE(WriteAt(*file, offset, bytes.size(), bytes.data()));
            }
            ASSERT_EQ(BytesOf(*file), expected);
        }
        ASSERT_TRUE(file->Complete());
        EXPECT_EQ(folder_.Read("copy"), expected);
        EXPECT_EQ(BytesOf(*file), expected);
    }
    EXPECT_EQ(folder_.Read("original"), before_);
}

TEST_F(OverlayFileTest, KeepsToItsBounds) {
    const RefPointer<OverlayFile> file = New<OverlayFile>(original_.Get(), copy_.Get());
    char bytes[8];
    std::uint64_t done = 7;
    EXPECT_FALSE(ReadAt(*file, 996, 8, bytes, &done));
    EXPECT_EQ(done, 4u);
    EXPECT_FALSE(WriteAt(*file, 1001, 1, bytes, &done));
    EXPECT_EQ(done, 0u);
    EXPECT_FALSE(WriteAt(*file, 8, UINT64_MAX - 4, bytes));
    EXPECT_FALSE(Seek(*file, 1001));
    EXPECT_EQ(file->Error(), 0);

    const RefPointer<OverlayFile> readOnly = New<OverlayFile>(original_.Get(), -1);
    EXPECT_FALSE(WriteAt(*readOnly, 0, 1, bytes));
    EXPECT_FALSE(SetSize(*readOnly, 0));
    EXPECT_EQ(BytesOf(*readOnly), before_);
}

}  // namespace ZEMA::testing

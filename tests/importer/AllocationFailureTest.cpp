// The road of one document with each of its allocations failing in turn.

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "importer/GetMetadataForFile.h"
#include "tests/importer/Attributes.h"
#include "tests/support/ArchiveBuilder.h"
#include "tests/support/TemporaryFolder.h"

namespace {

constexpr long kNever = -1;
long allocationsLeft = kNever;  // before one fails; one fails, not all that follow

bool NextFails() {
    return allocationsLeft != kNever && allocationsLeft-- == 0;
}

}  // namespace

// In place of the standard library's, for the whole program and the libraries it loads.
void* operator new(std::size_t size) {
    void* const memory = NextFails() ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace ZEMA::testing {

TEST(AllocationFailure, EndsACallWithoutATrace) {
    const TemporaryFolder folder;
    const std::string path = folder.Write("a.wqf", ArchiveBuilder().Deflated("IMAGE100.WQFML", SmallModel5()).Bytes());
    const Foundation::CFPointer<CFStringRef> text = PathString(path);
    long failures = 0;
    for (bool imported = false; !imported; ++failures) {
        ASSERT_LT(failures, 100000);
        const Attributes attributes = NewAttributes();
        allocationsLeft = failures;
        imported = GetMetadataForFile(nullptr, attributes.Get(), nullptr, text.Get());
        allocationsLeft = kNever;
        ASSERT_EQ(CFDictionaryGetCount(attributes.Get()), imported ? 7 : 0) << "allocation " << failures;
    }
    EXPECT_GT(failures, 100);  // so many allocations were really tried

    const Attributes attributes = NewAttributes();
    EXPECT_TRUE(GetMetadataForFile(nullptr, attributes.Get(), nullptr, text.Get()));
    EXPECT_EQ(TextOf(attributes), kSmallModelText);
}

}  // namespace ZEMA::testing

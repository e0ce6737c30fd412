// The road of one document with each of its allocations failing in turn.

#include <gtest/gtest.h>

#include "importer/MetadataImporterPlugin.h"
#include "tests/importer/Attributes.h"
#include "tests/support/AllocationFailure.h"
#include "tests/support/ArchiveBuilder.h"
#include "tests/support/TemporaryFolder.h"

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
        allocationsLeft = kNoAllocationFails;
        ASSERT_EQ(CFDictionaryGetCount(attributes.Get()), imported ? 7 : 0) << "allocation " << failures;
    }
    EXPECT_GT(failures, 100);  // so many allocations were really tried

    const Attributes attributes = NewAttributes();
    EXPECT_TRUE(GetMetadataForFile(nullptr, attributes.Get(), nullptr, text.Get()));
    EXPECT_EQ(TextOf(attributes), kSmallModelText);
}

}  // namespace ZEMA::testing

#include "platform/Foundation/NSScanner.h"

#include <gtest/gtest.h>

#include "tests/platform/Foundation/Text.h"

namespace Foundation {
namespace {

TEST(NSScanner, AnswersTheVectors) {
    const NSCharacterSet digits(u"0123456789");
    int rows = 0;
    for (const auto& row : VectorsOf("scanner.json")) {
        SCOPED_TRACE(row.dump());
        ASSERT_EQ(row["set"], "0123456789");
        NSScanner scanner(ZEMA::TextOf(row, "text").get());
        scanner.setScanLocation(row["location"]);
        if (row["skip_set"] == "none") scanner.setCharactersToBeSkipped(nullptr);
        StringPointer scanned;
        EXPECT_EQ(scanner.scanCharactersFromSet(digits, &scanned), row["ok"].get<bool>());
        EXPECT_EQ(scanner.scanLocation(), row["new_location"].get<CFIndex>());
        EXPECT_EQ(Utf8(scanned), row.value("scanned", "(null)"));
        ++rows;
    }
    EXPECT_GT(rows, 40);
}

}  // namespace
}  // namespace Foundation

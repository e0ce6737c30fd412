#include <gtest/gtest.h>

#include "tests/platform/Vectors.h"

namespace ZEMA {
namespace {

TEST(CFArray, KeepsItsElementsAliveWhenToldTo) {
    const Text text = MakeText("kept");
    {
        const auto texts = MakeArray({});
        const Held<CFMutableArrayRef> addresses(CFArrayCreateMutable(nullptr, 1, nullptr));
        for (const auto& array : {texts.get(), addresses.get()}) {
            CFArrayAppendValue(array, text.get());
            CFArrayAppendValue(array, text.get());
            EXPECT_EQ(CFGetRetainCount(text.get()), 3);
        }
        EXPECT_TRUE(CFEqual(texts.get(), MakeArray({"kept", "kept"}).get()));
        EXPECT_FALSE(CFEqual(texts.get(), MakeArray({"kept", "left"}).get()));
        EXPECT_FALSE(CFEqual(texts.get(), addresses.get()));
    }
    EXPECT_EQ(CFGetRetainCount(text.get()), 1);
}

}  // namespace
}  // namespace ZEMA

#include <gtest/gtest.h>

#include <type_traits>

#include "core/BasicArray.h"
#include "core/BasicDeque.h"
#include "core/BasicMap.h"
#include "core/BasicSet.h"
#include "core/String.h"

namespace ZEMA {
namespace {

// Held by value in polymorphic objects and destroyed through their own table.
static_assert(std::has_virtual_destructor_v<BasicArray<int>> && std::has_virtual_destructor_v<BasicMap<int, int>> &&
              std::has_virtual_destructor_v<BasicSet<int>> && std::has_virtual_destructor_v<BasicMultiset<int>> &&
              std::has_virtual_destructor_v<BasicDeque<int>>);

TEST(BasicMap, FindsNamesInAnyCaseAndKeepsTheFirst) {
    BasicMap<String, int, StringCaseInsensitiveLess<String>> map;
    EXPECT_TRUE(map.Insert("IMAGE", 1));
    EXPECT_FALSE(map.Insert("image", 2));
    EXPECT_EQ(map["Image"], 1);
    EXPECT_EQ(map.Find("Imag"), map.end());
}

TEST(BasicMultiset, KeepsEqualTextsInExactOrder) {
    BasicMultiset<String> set;
    for (const char* name : {"apple", "Banana", "apple"}) set.Insert(name);
    EXPECT_EQ(set.Count("apple"), 2U);
    EXPECT_EQ(*set.begin(), String("Banana"));
}

}  // namespace
}  // namespace ZEMA

#include <gtest/gtest.h>

#include <string>
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

TEST(BasicMap, KeepsTheFirstValueOfAKey) {
    BasicMap<unsigned long, std::string> map;
    EXPECT_TRUE(map.Insert(2, "two"));
    EXPECT_FALSE(map.Insert(2, "other"));
    EXPECT_EQ(map[2], "two");
    EXPECT_EQ(map[1], "");  // made by the look-up
    EXPECT_EQ(map.begin()->first, 1U);
    map.Erase(map.Find(1));
    EXPECT_EQ(map.Find(1), map.end());
    EXPECT_EQ(map.Size(), 1U);
}

TEST(BasicMap, FindsNamesInAnyCase) {
    BasicMap<String, int, StringCaseInsensitiveLess<String>> map;
    map.Insert("IMAGE", 1);
    EXPECT_NE(map.Find("Image"), map.end());
    EXPECT_FALSE(map.Insert("image", 2));
    EXPECT_EQ(map.Find("Imag"), map.end());
}

TEST(BasicSet, OrdersExactlyWhereCaseCounts) {
    BasicSet<String> set;
    for (const char* name : {"apple", "Banana", "apple"}) set.Insert(name);
    ASSERT_EQ(set.Size(), 2U);
    EXPECT_EQ(*set.begin(), String("Banana"));
}

TEST(BasicMultiset, KeepsEqualTexts) {
    BasicMultiset<String> set;
    for (const char* name : {"b", "a", "b"}) set.Insert(name);
    EXPECT_EQ(set.Count("b"), 2U);
    set.Erase(set.Find("b"));
    EXPECT_EQ(set.Size(), 2U);
}

TEST(BasicDeque, PushingMovesNoElement) {
    BasicDeque<std::string> deque;
    deque.PushBack("first");
    const std::string* const first = &deque.Back();
    for (int element = 0; element < 1000; ++element) deque.PushBack("x");
    EXPECT_EQ(&*deque.begin(), first);
    while (deque.Size() > 1) deque.PopBack();
    EXPECT_EQ(deque.Back(), "first");
    deque.PopBack();
    EXPECT_TRUE(deque.Empty());
}

}  // namespace
}  // namespace ZEMA

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

#include "core/BasicArray.h"
#include "tests/support/EventLog.h"

namespace ZEMA {
namespace {

using testing::EventLog;

// Writes down its copies and ends, and refuses the copy after the next `copiesLeft`.
struct Element {
    Element(EventLog& events, const char* label) : log(&events), name(label) {}
    Element(const Element& other) : log(other.log), name(other.name) {
        if (copiesLeft-- == 0) throw std::bad_alloc();
        log->push_back("copy " + name);
    }
    ~Element() { log->push_back("end " + name); }

    static inline int copiesLeft = -1;
    EventLog* log;
    std::string name;
};

TEST(BasicArray, GrowsByHalfButByFourAtLeast) {
    BasicArray<int> array;
    std::vector<std::size_t> capacities;
    for (int element = 0; element < 30; ++element) {
        array.PushBack(element);
        if (capacities.empty() || capacities.back() != array.Capacity()) capacities.push_back(array.Capacity());
    }
    EXPECT_EQ(capacities, (std::vector<std::size_t>{4, 8, 12, 18, 27, 40}));
    array.Reserve(30);  // only upwards, and exactly
    EXPECT_EQ(array.Capacity(), 40U);
    array.Reserve(41);
    array.Clear();
    EXPECT_EQ(array.Capacity(), 41U);
    EXPECT_THROW(array.Reserve(static_cast<std::size_t>(-1) / 4), std::bad_alloc);
}

TEST(BasicArray, CopiesAllBeforeItDestroysAnyAndStaysWholeWhenThatFails) {
    EventLog log;
    BasicArray<Element> array;
    array.Reserve(2);
    array.PushBack(Element(log, "a"));
    array.PushBack(Element(log, "b"));
    log.clear();
    Element::copiesLeft = 2;
    EXPECT_THROW(array.PushBack(array[0]), std::bad_alloc);
    EXPECT_EQ(log, (EventLog{"copy a", "copy b", "end a", "end b"}));
    EXPECT_EQ(array.Size(), 2U);
    log.clear();
    Element::copiesLeft = -1;
    array.PushBack(array[0]);
    EXPECT_EQ(log, (EventLog{"copy a", "copy b", "copy a", "end a", "end b"}));
}

TEST(BasicArray, EqualsAnotherOfTheSameElementsAndLength) {
    BasicArray<int> array;
    array.Resize(3, 7);
    BasicArray<int> other(array);
    EXPECT_TRUE(array == other);
    other.PopBack();
    EXPECT_FALSE(array == other || other == array);
    other.PushBack(8);
    EXPECT_FALSE(array == other);
}

}  // namespace
}  // namespace ZEMA

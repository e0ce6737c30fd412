#include "core/BasicArray.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

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
    Element& operator=(const Element&) = default;

    static inline int copiesLeft = -1;
    EventLog* log;
    std::string name;
};

std::vector<int> ElementsOf(const BasicArray<int>& array) {
    return {array.begin(), array.end()};
}

TEST(BasicArray, GrowsByHalfButByFourAtLeast) {
    BasicArray<int> array;
    std::vector<std::size_t> capacities;
    for (int element = 0; element < 30; ++element) {
        array.PushBack(element);
        if (capacities.empty() || capacities.back() != array.Capacity()) capacities.push_back(array.Capacity());
    }
    EXPECT_EQ(capacities, (std::vector<std::size_t>{4, 8, 12, 18, 27, 40}));
    EXPECT_EQ(array[29], 29);
}

TEST(BasicArray, ReservesExactlyAndOnlyUpwards) {
    BasicArray<int> array;
    array.Reserve(6);
    array.PushBack(1);
    const int* const block = array.begin();
    array.Reserve(3);
    EXPECT_EQ(array.Capacity(), 6U);
    EXPECT_EQ(array.begin(), block);
    array.Reserve(8);
    EXPECT_EQ(array.Capacity(), 8U);
    array.Clear();
    EXPECT_EQ(array.Capacity(), 8U);
    EXPECT_THROW(array.Reserve(static_cast<std::size_t>(-1) / 4), std::bad_alloc);
}

TEST(BasicArray, CopiesAllBeforeItDestroysAny) {
    EventLog log;
    BasicArray<Element> array;
    array.Reserve(2);
    array.PushBack(Element(log, "a"));
    array.PushBack(Element(log, "b"));
    log.clear();
    array.PushBack(array[0]);
    EXPECT_EQ(log, (EventLog{"copy a", "copy b", "copy a", "end a", "end b"}));
    EXPECT_EQ(array.Back().name, "a");
}

TEST(BasicArray, StaysAsItWasWhenGrowingFails) {
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
    EXPECT_EQ(array.Capacity(), 2U);
    Element::copiesLeft = -1;
}

TEST(BasicArray, CopiesAndMovesAsAValue) {
    BasicArray<int> array;
    for (const int element : {1, 2, 3}) array.PushBack(element);
    BasicArray<int> copy = array;
    copy[1] = 20;
    EXPECT_EQ(ElementsOf(array), (std::vector<int>{1, 2, 3}));
    const BasicArray<int>& itself = copy;
    copy = itself;
    array = std::move(copy);
    EXPECT_EQ(ElementsOf(array), (std::vector<int>{1, 20, 3}));
    array.Erase(0);
    array.Resize(4, array[0]);
    EXPECT_EQ(ElementsOf(array), (std::vector<int>{20, 3, 20, 20}));
    array.Resize(1);
    EXPECT_EQ(ElementsOf(array), (std::vector<int>{20}));
}

}  // namespace
}  // namespace ZEMA

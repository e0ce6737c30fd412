// Objects, their references, arrays, and the release of whole trees. That depth takes no stack is tested where trees
// are read.
#include "core/Object.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <thread>
#include <vector>

#include "core/BasicArray.h"
#include "core/ReleaseDeep.h"
#include "tests/support/EventLog.h"

namespace ZEMA {
namespace {

// Writes down its last release and its end: "-a" is both of the node a.
class Node : public Object {
public:
    Node(std::string& log, char name) : log_(log), name_(name) {}
    void OnLastRelease() override { log_ += '-'; }

    RefPointer<Node> Add(char name) {
        children.PushBack(New<Node>(log_, name));
        return children.Back();
    }
    static void ReleaseAll(BasicArray<RefPointer<Node>>& nodes) {
        ReleaseDeep(nodes, [](Node& node) { return &node.children; });
    }

    BasicArray<RefPointer<Node>> children;

protected:
    ~Node() override {
        ReleaseAll(children);
        log_ += name_;
    }

private:
    std::string& log_;
    char name_;
};

TEST(Object, CountsReferencesOfSeveralThreadsAndEndsOnce) {
    std::string log;
    RefPointer<Node> held = New<Node>(log, 'a');
    const auto copyOften = [object = held.Get()] {
        for (int turn = 0; turn < 20000; ++turn) {
            const RefPointer<Node> first(object);
            const RefPointer<Object> second(first);
        }
    };
    std::thread threads[] = {std::thread(copyOften), std::thread(copyOften), std::thread(copyOften)};
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(held->ReferenceCount(), 1);
    held = nullptr;
    EXPECT_EQ(log, "-a");
}

TEST(RefPointer, TakesTheNewTargetBeforeItReleasesTheOldOne) {
    std::string log;
    RefPointer<Node> held = New<Node>(log, 'a');
    const RefPointer<Node>& itself = held;
    held = itself;
    held.Reset(itself.Get());
    EXPECT_EQ(held->ReferenceCount(), 1);
    Node* const owned = held->Add('b').Get();
    held.Reset(owned);  // whose last owner goes
    EXPECT_EQ(log, "-a");
    RefPointer<Node> moved = std::move(held);
    held = moved;
    EXPECT_EQ(held->ReferenceCount(), 2);
}

TEST(ReleaseDeep, ReleasesFromTheEndEachAfterAllBelowIt) {
    std::string log;
    BasicArray<RefPointer<Node>> roots;
    roots.PushBack(New<Node>(log, 'a'));
    roots[0]->Add('b')->Add('c')->Add('d');
    roots[0]->children[0]->Add('e');
    roots[0]->children.PushBack(nullptr);
    roots[0]->Add('f')->Add('g');
    const RefPointer<Node> kept = roots[0]->Add('k');  // here too
    kept->Add('l');
    roots.PushBack(nullptr);
    roots.PushBack(New<Node>(log, 'h'));
    for (const auto& child : {roots[0]->children[2], roots[0]->children[0]}) roots[2]->children.PushBack(child);
    Node::ReleaseAll(roots);
    EXPECT_EQ(log, "-h-g-f-e-d-c-b-a");  // what has two parents goes with the last of them
    EXPECT_TRUE(roots.Empty());
    EXPECT_EQ(kept->children.Size(), 1U);
}

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

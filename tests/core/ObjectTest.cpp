// Objects, their references, and the release of whole trees. That depth takes no stack is tested where trees are read.
#include "core/Object.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "core/ReleaseDeep.h"

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

}  // namespace
}  // namespace ZEMA

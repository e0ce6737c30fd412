#include "core/ReleaseDeep.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "core/Object.h"
#include "tests/support/EventLog.h"

namespace ZEMA {
namespace {

using testing::EventLog;

// Writes its name down when it ends, and how far the stack reached.
class Node : public Object {
public:
    using Children = BasicArray<RefPointer<Node>>;

    Node(EventLog* log, std::string name) : log_(log), name_(std::move(name)) {}

    RefPointer<Node> Add(const RefPointer<Node>& child) {
        children.PushBack(child);
        return child;
    }
    RefPointer<Node> Add(const std::string& name) { return Add(New<Node>(log_, name)); }

    static void ReleaseAll(Children& nodes) {
        ReleaseDeep(nodes, [](Node& node) { return node.isLeaf ? nullptr : &node.children; });
    }

    Children children;
    bool isLeaf = false;  // one that answers with no array at all
    static inline std::uintptr_t lowestStack = 0;

protected:
    ~Node() override {
        const char here = 0;
        lowestStack = std::min(lowestStack, reinterpret_cast<std::uintptr_t>(&here));
        ReleaseAll(children);
        if (log_ != nullptr) log_->push_back(name_);
    }

private:
    EventLog* log_;
    std::string name_;
};

class ReleaseDeepTest : public ::testing::Test {
protected:
    void Release() { Node::ReleaseAll(roots); }
    RefPointer<Node> Root(const std::string& name) {
        roots.PushBack(New<Node>(&log, name));
        return roots.Back();
    }

    EventLog log;
    Node::Children roots;
};

TEST_F(ReleaseDeepTest, ReleasesFromTheEndEachAfterAllBelowIt) {
    {
        const RefPointer<Node> a = Root("a");
        const RefPointer<Node> a1 = a->Add("a1");
        a1->Add("a1x")->Add("a1x_");
        a1->Add("a1y");
        a->Add(RefPointer<Node>());
        a->Add("a2")->Add("a2x");
        roots.PushBack(nullptr);
        Root("b")->Add("b1")->isLeaf = true;
    }
    Release();
    EXPECT_EQ(log, (EventLog{"b1", "b", "a2x", "a2", "a1y", "a1x_", "a1x", "a1", "a"}));
    EXPECT_TRUE(roots.Empty());
}

TEST_F(ReleaseDeepTest, LeavesWhatOthersHoldWhole) {
    const RefPointer<Node> kept = Root("a")->Add("kept");
    kept->Add("below");
    Release();
    EXPECT_EQ(log, EventLog{"a"});
    EXPECT_EQ(kept->ReferenceCount(), 1);
    EXPECT_EQ(kept->children.Size(), 1U);
}

TEST_F(ReleaseDeepTest, ReleasesAChildOfTwoParentsWithTheLastOfThem) {
    {
        const RefPointer<Node> shared = Root("a")->Add("shared");
        shared->Add("below");
        roots[0]->Add(shared);
        Root("b")->Add(shared);
    }
    Release();
    EXPECT_EQ(log, (EventLog{"b", "below", "shared", "a"}));
}

TEST_F(ReleaseDeepTest, NeedsNoStackForDepthOrWidth) {
    constexpr int kDepth = 1000000;
    const char here = 0;
    Node::lowestStack = reinterpret_cast<std::uintptr_t>(&here);
    {
        RefPointer<Node> bottom = New<Node>(nullptr, "");
        roots.PushBack(bottom);
        for (int depth = 0; depth < kDepth; ++depth) {
            const RefPointer<Node> next = bottom->Add(New<Node>(nullptr, ""));
            if (depth % 1000 == 0) bottom->Add(New<Node>(nullptr, ""));
            bottom = next;
        }
        for (int width = 0; width < kDepth / 10; ++width) bottom->Add(New<Node>(nullptr, ""));
    }
    Release();
    EXPECT_LT(reinterpret_cast<std::uintptr_t>(&here) - Node::lowestStack, 64U * 1024);
}

}  // namespace
}  // namespace ZEMA

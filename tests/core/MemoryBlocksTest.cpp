// How pieces of memory come and go. Sanitizer builds take each piece singly, and count more of them.
#include "core/MemoryBlocks.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <vector>

#include "core/AString.h"
#include "core/BasicArray.h"
#include "core/BasicMap.h"
#include "core/Object.h"
#include "core/RefPointer.h"

namespace {

int heldFromHeap = 0;  // by MemoryBlocks, which is the only one to take arrays of bytes here

}  // namespace

void* operator new[](std::size_t size) {
    ++heldFromHeap;
    return operator new(size);
}
void operator delete[](void* memory) noexcept {
    if (memory != nullptr) --heldFromHeap;
    operator delete(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    operator delete[](memory);
}

namespace ZEMA {
namespace {

class Thing : public Object {
public:
    explicit Thing(int content) : number(content) {}
    int number;

protected:
    ~Thing() override = default;
};

TEST(MemoryBlocks, GoWithTheLastOfWhatIsInThem) {
    const int before = heldFromHeap;
    std::vector<RefPointer<Thing>> things;
    {
        MemoryBlocks blocks;
        for (int number = 0; number < 10000; ++number) things.push_back(NewIn<Thing>(blocks, number));
    }
    const int withAll = heldFromHeap;
    EXPECT_GT(withAll, before + 1);
    things.erase(things.begin() + 1, things.end() - 1);  // from the first block and from the last
    EXPECT_LE(heldFromHeap, before + 2);
    EXPECT_EQ(things.front()->number, 0);
    EXPECT_EQ(things.back()->number, 9999);
    things.clear();
    EXPECT_EQ(heldFromHeap, before);
}

TEST(MemoryBlocks, HoldTextsArraysAndNodesBesideThoseOfTheHeap) {
    const int before = heldFromHeap;
    {
        AString text;
        BasicArray<AString> array;
        {
            MemoryBlocks blocks;
            const AString kept("kept", 4, &blocks);
            text = kept;
            array.Reserve(1, &blocks);
            for (int count = 0; count < 3; ++count) array.PushBack(text);  // moves to the heap with the second
            array.PushBack(AString(std::string(100000, 'x').c_str(), 100000, &blocks));
            BasicMap<int, AString> map(blocks);
            map.Insert(1, text);
            BasicMap<int, AString> copy(map);
            map = std::move(copy);
            EXPECT_EQ(map.Find(1)->second, "kept");
        }
        text.Append("!", 1);
        EXPECT_EQ(text, "kept!");
        EXPECT_EQ(array[2], "kept");
        EXPECT_EQ(array[3].Length(), 100000U);
    }
    EXPECT_EQ(heldFromHeap, before);
}

}  // namespace
}  // namespace ZEMA

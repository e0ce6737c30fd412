// Memory for many small things that go at about the same time.
#pragma once

#include <cstddef>
#include <new>
#include <type_traits>

namespace ZEMA {

// Takes memory from the heap in blocks, and cuts the pieces that it is asked for from them, one behind the other. An
// element of a document is several small pieces, each of which costs the heap as much as everything else that is done
// for it; here it is an addition.
//
// A piece that is given back is not used again. A block goes when it was left for the next one and all its pieces have
// been given back, so that whatever outlives the MemoryBlocks keeps the memory that it stands in, and nothing else.
//
// Whoever makes an object, an array or a text says which MemoryBlocks it comes from. None, the usual case, is the heap.
// How it goes does not depend on that: before each piece stands what it belongs to.
//
// Errors:  memory that runs out is std::bad_alloc.
// Threads: the pieces of one MemoryBlocks stay on one thread at a time, as the block's count is plain arithmetic.
class MemoryBlocks {
public:
    MemoryBlocks() = default;
    MemoryBlocks(const MemoryBlocks&) = delete;
    MemoryBlocks& operator=(const MemoryBlocks&) = delete;
    ~MemoryBlocks() { LeaveBlock(); }

    // A piece, aligned for pointers; from the heap when `blocks` is null.
    static void* Allocate(std::size_t size, MemoryBlocks* blocks) {
        return blocks == nullptr ? AllocateSingly(size) : blocks->Cut(size);
    }

    // Gives a piece back, wherever it is from; null is none.
    static void Free(void* piece) noexcept {
        if (piece == nullptr) return;
        if constexpr (kSingly) return ::operator delete[](piece);
        Tag* const tag = static_cast<Tag*>(piece) - 1;
        if (tag->block == nullptr) {
            ::operator delete[](tag);
        } else {
            Drop(tag->block);
        }
    }

private:
    // Sanitizers watch over each piece that the heap knows of, so they are to see each.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    static constexpr bool kSingly = true;
#elif defined(__has_feature)
    static constexpr bool kSingly = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
    static constexpr bool kSingly = false;
#endif

    // Of the first block, for small documents; each one behind it has twice as much, up to the largest. A large piece
    // would leave too much of a block unused.
    static constexpr std::size_t kFirstBlockSize = std::size_t{8} * 1024;
    static constexpr std::size_t kLargestBlockSize = std::size_t{64} * 1024;
    static constexpr std::size_t kLargestPiece = kFirstBlockSize / 8;

    struct Block {
        std::size_t pieceCount;  // that have not been given back, and one more until the block is left
    };

    // Stands before each piece: the block that it is a part of, null on the heap.
    struct Tag {
        Block* block;
    };
    static_assert(sizeof(Block) % alignof(Tag) == 0);

    static void* AllocateSingly(std::size_t size) {
        if constexpr (kSingly) return ::operator new[](size);
        Tag* const tag = static_cast<Tag*>(::operator new[](sizeof(Tag) + size));
        return new (tag) Tag{nullptr} + 1;
    }

    void* Cut(std::size_t size) {
        if (kSingly || size > kLargestPiece) return AllocateSingly(size);
        const std::size_t whole = (sizeof(Tag) + size + alignof(Tag) - 1) / alignof(Tag) * alignof(Tag);
        if (whole > static_cast<std::size_t>(end_ - next_)) StartBlock();
        void* const place = next_;
        next_ += whole;
        ++block_->pieceCount;
        return new (place) Tag{block_} + 1;
    }

    void StartBlock();
    void LeaveBlock();
    static void Drop(Block* block) noexcept {
        if (--block->pieceCount == 0) ::operator delete[](block);
    }

    std::size_t nextBlockSize_ = kFirstBlockSize;
    Block* block_ = nullptr;  // that pieces are cut from
    char* next_ = nullptr;    // the rest of it
    char* end_ = nullptr;
};

// Hands a standard container its nodes. Where they go does not depend on where they are from, so containers may
// exchange them.
template <class T>
struct BlockAllocator {
    using value_type = T;
    using propagate_on_container_move_assignment = std::true_type;
    using propagate_on_container_swap = std::true_type;
    using is_always_equal = std::true_type;

    BlockAllocator(MemoryBlocks* source = nullptr) : blocks(source) {}
    template <class U>
    BlockAllocator(const BlockAllocator<U>& other) : blocks(other.blocks) {}
    BlockAllocator select_on_container_copy_construction() const { return {}; }

    T* allocate(std::size_t count) { return static_cast<T*>(MemoryBlocks::Allocate(count * sizeof(T), blocks)); }
    void deallocate(T* memory, std::size_t) noexcept { MemoryBlocks::Free(memory); }

    friend bool operator==(const BlockAllocator&, const BlockAllocator&) { return true; }

    MemoryBlocks* blocks;
};

}  // namespace ZEMA

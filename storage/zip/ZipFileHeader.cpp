#include "storage/zip/ZipFileHeader.h"

#ifdef __linux__
#include <sys/mman.h>
#endif

#include <algorithm>
#include <cstring>

#include "storage/zip/ZipContents.h"
#include "storage/zip/ZipFormat.h"

namespace ZEMA {

namespace {

// Below this, less would be saved than the last page, touched as a whole, may waste.
constexpr std::size_t kLargeBlock = std::size_t{8} << 20;

#ifdef __linux__
void AskForLargePages(void* block, std::size_t size) {
    constexpr std::uintptr_t pageSize = 4096;
    const std::uintptr_t begin = (reinterpret_cast<std::uintptr_t>(block) + pageSize - 1) / pageSize * pageSize;
    const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(block) + size) / pageSize * pageSize;
    // Advice: a system that does not follow it, or has other pages, gives small ones.
    static_cast<void>(madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE));
}
#else
void AskForLargePages(void*, std::size_t) {}
#endif

using Segment = ZipFileHeader::FileDataSegment;

constexpr std::uint64_t kSpaceUnit = 8192;       // segments that are added come in multiples of this
constexpr std::uint64_t kHalfUnit = 1024;        // halves of a block that could not be had in multiples of this
constexpr std::uint64_t kSmallestSplit = 16383;  // no block below this is split

std::uint64_t RoundUp(std::uint64_t size, std::uint64_t unit) {
    return (size + unit - 1) / unit * unit;
}

// Recursion ends after 19 halvings of the largest size. Rounded up many times, the halves of a large block may reach
// far behind it: each is checked, since offsets and sizes of segments have 32 bits.
bool AppendBlocks(ZipFileHeader& member, std::uint64_t size, AllocateBlock allocate) {
    const std::uint64_t end = SegmentsEnd(member);
    if (size > kMaxOffset - end) return false;
    MallocBytes block(static_cast<unsigned char*>(allocate(static_cast<std::size_t>(size))));
    if (block) {
        member.segments.PushBack(
            {static_cast<std::uint32_t>(end), static_cast<std::uint32_t>(size), block.get(), true});
        static_cast<void>(block.release());
        return true;
    }
    if (size < kSmallestSplit) return false;
    const std::uint64_t half = RoundUp((size + 1) / 2, kHalfUnit);
    return AppendBlocks(member, half, allocate) && AppendBlocks(member, half, allocate);
}

// Takes the segments appended meanwhile away again unless the append succeeded.
class AppendedSegments {
public:
    explicit AppendedSegments(ZipFileHeader& member) : member_(member), end_(SegmentsEnd(member)) {}
    AppendedSegments(const AppendedSegments&) = delete;
    AppendedSegments& operator=(const AppendedSegments&) = delete;
    ~AppendedSegments() {
        if (!kept_) DropSegments(member_, static_cast<std::uint32_t>(end_));
    }
    void Keep() { kept_ = true; }

private:
    ZipFileHeader& member_;
    std::uint64_t end_;
    bool kept_ = false;
};

// Calls `visit(bytes of a segment, how many, position in the range)` for the pieces of a range that segments cover.
template <class Visit>
void ForEachPiece(const ZipFileHeader& member, std::uint64_t offset, std::uint64_t size, Visit visit) {
    if (size == 0) return;
    const Segment* segment =
        std::upper_bound(member.segments.begin(), member.segments.end(), offset,
                         [](std::uint64_t value, const Segment& candidate) { return value < candidate.offset; }) -
        1;
    for (std::uint64_t done = 0; done < size; ++segment) {
        const std::uint64_t skipped = offset + done - segment->offset;
        const std::uint64_t piece = std::min(segment->size - skipped, size - done);
        visit(static_cast<unsigned char*>(segment->data) + skipped, static_cast<std::size_t>(piece), done);
        done += piece;
    }
}

}  // namespace

ZipFileHeader::~ZipFileHeader() {
    DropSegments(*this, 0);
}

bool ZipFileHeader::HasDescriptor() const {
    return (flags & kFlagDescriptor) != 0;
}

std::uint64_t ZipFileHeader::DataAreaSize() const {
    return std::uint64_t{compressedSize} + (HasDescriptor() ? kDescriptorSize : 0);
}

void ZipFileHeader::ForgetContents() {
    DropSegments(*this, 0);
    uncompressedSize = archivedSize;
    dataOffset = 0;
}

void* MallocBlock(std::size_t size) {
    void* block = std::malloc(size);
    if (block != nullptr && size >= kLargeBlock) AskForLargePages(block, size);
    return block;
}

bool AppendSegments(ZipFileHeader& member, std::uint64_t size, AllocateBlock allocate) {
    const std::uint64_t room = kMaxOffset - SegmentsEnd(member);
    if (size > room) return false;
    AppendedSegments appended(member);
    // The last unit below 2^32 is cut short by one byte.
    if (!AppendBlocks(member, std::min(RoundUp(size, kSpaceUnit), room), allocate)) return false;
    appended.Keep();
    return true;
}

std::uint64_t SegmentsEnd(const ZipFileHeader& member) {
    if (member.segments.Empty()) return 0;
    const Segment& last = member.segments.Back();
    return std::uint64_t{last.offset} + last.size;
}

void DropSegments(ZipFileHeader& member, std::uint32_t size) {
    while (!member.segments.Empty() && member.segments.Back().offset >= size) {
        if (member.segments.Back().owned) std::free(member.segments.Back().data);
        member.segments.PopBack();
    }
}

void CopyFromSegments(const ZipFileHeader& member, std::uint64_t offset, std::uint64_t size, void* buffer) {
    ForEachPiece(member, offset, size, [buffer](unsigned char* bytes, std::size_t count, std::uint64_t done) {
        std::memcpy(static_cast<unsigned char*>(buffer) + done, bytes, count);
    });
}

void CopyToSegments(ZipFileHeader& member, std::uint64_t offset, std::uint64_t size, const void* buffer) {
    ForEachPiece(member, offset, size, [buffer](unsigned char* bytes, std::size_t count, std::uint64_t done) {
        std::memcpy(bytes, static_cast<const unsigned char*>(buffer) + done, count);
    });
}

void ZeroSegments(ZipFileHeader& member, std::uint64_t offset, std::uint64_t size) {
    ForEachPiece(member, offset, size,
                 [](unsigned char* bytes, std::size_t count, std::uint64_t) { std::memset(bytes, 0, count); });
}

}  // namespace ZEMA

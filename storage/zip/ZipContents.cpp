#include "storage/zip/ZipContents.h"

#include <zlib.h>

#include <algorithm>

#include "core/Limits.h"
#include "storage/zip/Crc32.h"
#include "storage/zip/ZipFileHeader.h"
#include "storage/zip/ZipFormat.h"

namespace ZEMA {

namespace {

using Segment = ZipFileHeader::FileDataSegment;

constexpr char kZlibVersion[] = "1.2.11";  // of the interface; zlib compares the first digit
constexpr int kRawDeflate = -15;           // no zlib header, the largest window
constexpr int kLevel = 9;
constexpr int kMemoryLevel = 9;

// A stream of zlib that unpacks, ended with its scope.
class Inflater {
public:
    Inflater() { ready_ = inflateInit2_(&stream, kRawDeflate, kZlibVersion, sizeof(z_stream)) == Z_OK; }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;
    ~Inflater() {
        if (ready_) inflateEnd(&stream);
    }
    bool Ready() const { return ready_; }

    z_stream stream{};

private:
    bool ready_;
};

// As above, one that packs.
class Deflater {
public:
    Deflater() {
        ready_ = deflateInit2_(&stream, kLevel, Z_DEFLATED, kRawDeflate, kMemoryLevel, Z_DEFAULT_STRATEGY, kZlibVersion,
                               sizeof(z_stream)) == Z_OK;
    }
    Deflater(const Deflater&) = delete;
    Deflater& operator=(const Deflater&) = delete;
    ~Deflater() {
        if (ready_) deflateEnd(&stream);
    }
    bool Ready() const { return ready_; }

    z_stream stream{};

private:
    bool ready_;
};

MallocBytes AllocateBytes(std::uint32_t size) {
    return MallocBytes(static_cast<unsigned char*>(MallocBlock(std::max(size, 1u))));
}

// The bytes of a segment that belong to the member.
std::uint32_t UsedBytes(const ZipFileHeader& member, const Segment& segment) {
    if (segment.offset >= member.uncompressedSize) return 0;
    return std::min(segment.size, member.uncompressedSize - segment.offset);
}

bool LoadStored(File& archive, ZipFileHeader& member) {
    for (const Segment& segment : member.segments) {
        const std::uint32_t size = UsedBytes(member, segment);
        if (!ReadAt(archive, std::uint64_t{member.dataOffset} + segment.offset, size, segment.data)) return false;
    }
    return true;
}

// Unpacks into the segments in turn. `unpacked` receives the bytes that the data gave; true when it came to its end.
bool Inflate(unsigned char* packed, const ZipFileHeader& member, std::uint32_t& unpacked) {
    Inflater inflater;
    if (!inflater.Ready()) return false;
    z_stream& stream = inflater.stream;
    stream.next_in = packed;
    stream.avail_in = member.compressedSize;
    int result = Z_OK;
    for (const Segment& segment : member.segments) {
        stream.next_out = static_cast<unsigned char*>(segment.data);
        stream.avail_out = UsedBytes(member, segment);
        const bool last = segment.offset + stream.avail_out == member.uncompressedSize;
        result = inflate(&stream, last ? Z_FINISH : Z_NO_FLUSH);
        // Output that is not filled means that the stream ended, or that there is no more input.
        if (result != Z_OK || stream.avail_out != 0 || last) break;
    }
    unpacked = static_cast<std::uint32_t>(stream.total_out);
    return result == Z_STREAM_END;
}

bool LoadDeflated(File& archive, ZipFileHeader& member) {
    std::uint32_t unpacked = 0;
    {
        const MallocBytes packed = AllocateBytes(member.compressedSize);
        if (!packed || !ReadAt(archive, member.dataOffset, member.compressedSize, packed.get())) return false;
        if (!Inflate(packed.get(), member, unpacked)) return false;
    }
    ZeroSegments(member, unpacked, member.uncompressedSize - unpacked);
    return true;
}

// Deflates all segments into `output`, which is as large as the contents, and sums their bytes on the way, also when
// the output is full or null. True when the packed form fits.
bool DeflateAll(const ZipFileHeader& member, unsigned char* output, std::uint32_t& packedSize, Crc32& crc) {
    Deflater deflater;
    z_stream& stream = deflater.stream;
    stream.next_out = output;
    stream.avail_out = member.uncompressedSize;
    int result = deflater.Ready() && output != nullptr ? Z_OK : Z_STREAM_ERROR;
    for (const Segment& segment : member.segments) {
        const std::uint32_t size = UsedBytes(member, segment);
        crc.Update(segment.data, size);
        if (result != Z_OK || size == 0) continue;
        stream.next_in = static_cast<unsigned char*>(segment.data);
        stream.avail_in = size;
        const bool last = segment.offset + size == member.uncompressedSize;
        result = deflate(&stream, last ? Z_FINISH : Z_NO_FLUSH);
    }
    packedSize = static_cast<std::uint32_t>(stream.total_out);
    return result == Z_STREAM_END;
}

}  // namespace

bool ClaimsPlausibleSize(const ZipFileHeader& member, std::uint64_t archiveSize) {
    const bool stored = member.method == kMethodStored;
    if (member.dataOffset > archiveSize) return false;
    if ((stored ? member.uncompressedSize : member.compressedSize) > archiveSize - member.dataOffset) return false;
    return stored || member.uncompressedSize <= kMostExpansion * member.compressedSize + kExpansionSlack;
}

bool LoadContents(File& archive, ZipFileHeader& member) {
    if (member.uncompressedSize == 0 || !member.segments.Empty()) return true;
    if ((member.flags & kFlagEncrypted) != 0) return false;
    if (!AppendSegments(member, member.uncompressedSize)) return false;
    const bool loaded = member.method == kMethodStored ? LoadStored(archive, member) : LoadDeflated(archive, member);
    if (!loaded) DropSegments(member, 0);
    return loaded;
}

PackedContents PackContents(const ZipFileHeader& member) {
    PackedContents packed;
    if (member.uncompressedSize == 0) return packed;
    MallocBytes output = AllocateBytes(member.uncompressedSize);
    Crc32 crc;
    if (DeflateAll(member, output.get(), packed.size, crc)) {
        packed.method = kMethodDeflated;
        packed.bytes = std::move(output);
    } else {
        packed.method = kMethodStored;
        packed.size = member.uncompressedSize;
    }
    packed.crc32 = crc.Value();
    return packed;
}

bool WritePackedContents(File& archive, const ZipFileHeader& member, const PackedContents& packed) {
    if (packed.bytes) return WriteAt(archive, member.dataOffset, packed.size, packed.bytes.get());
    for (const Segment& segment : member.segments) {
        const std::uint32_t size = UsedBytes(member, segment);
        if (size == 0) break;
        if (!WriteAt(archive, std::uint64_t{member.dataOffset} + segment.offset, size, segment.data)) return false;
    }
    return true;
}

}  // namespace ZEMA

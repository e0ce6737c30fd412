#include "host/archive/PackedData.h"

#include <zlib.h>

#include <algorithm>
#include <memory>

#include "host/archive/LocalRecord.h"
#include "storage/zip/ZipFormat.h"

namespace ZEMA {

namespace {

constexpr std::size_t kBufferSize = 1 << 18;

// One stream of the codec, ended when it goes.
class Inflater {
public:
    Inflater() : ready_(inflateInit2(&stream, -MAX_WBITS) == Z_OK) {}
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;
    ~Inflater() {
        if (ready_) inflateEnd(&stream);
    }
    bool IsReady() const { return ready_; }

    z_stream stream{};

private:
    bool ready_;
};

// Unpacks a piece: Z_OK when it is used up. More than the size that is expected is not unpacked.
int InflatePiece(z_stream& stream, unsigned char* output, std::uint64_t expected, ContentsSums& sums) {
    int result = Z_OK;
    while (result == Z_OK && sums.Size() <= expected) {
        stream.next_out = output;
        stream.avail_out = kBufferSize;
        result = inflate(&stream, Z_NO_FLUSH);
        sums.Add(output, kBufferSize - stream.avail_out);
        if (stream.avail_in == 0 && stream.avail_out != 0) break;
    }
    // The buffer may have become full with the last byte, and there was nothing more to do.
    return result == Z_BUF_ERROR ? Z_OK : result;
}

}  // namespace

void ContentsSums::Add(const void* bytes, std::size_t count) {
    size_ += count;
    crc32_ = static_cast<std::uint32_t>(crc32_z(crc32_, static_cast<const Bytef*>(bytes), count));
}

bool IsSound(FileWindow& window, File& file, const PackedData& data) {
    const bool deflated = data.method == kMethodDeflated;
    if (!deflated && data.method != kMethodStored) return false;
    if (data.size == 0 && data.unpackedSize == 0) return data.crc32 == 0;  // some writers call nothing deflated
    Inflater inflater;
    if (!inflater.IsReady()) return false;
    const auto output = std::make_unique_for_overwrite<unsigned char[]>(kBufferSize);
    ContentsSums sums;
    int result = Z_OK;
    for (std::uint64_t done = 0; done < data.size && result == Z_OK;) {
        const auto part = static_cast<std::size_t>(std::min<std::uint64_t>(data.size - done, kBufferSize));
        const char* const input = window.Find(file, data.offset + done, part);
        if (input == nullptr) return false;
        done += part;
        if (!deflated) {
            sums.Add(input, part);
            continue;
        }
        inflater.stream.next_in = reinterpret_cast<z_const Bytef*>(const_cast<char*>(input));
        inflater.stream.avail_in = static_cast<uInt>(part);
        result = InflatePiece(inflater.stream, output.get(), data.unpackedSize, sums);
    }
    const bool ended = !deflated || result == Z_STREAM_END;
    return ended && sums.Size() == data.unpackedSize && sums.Crc32() == data.crc32;
}

}  // namespace ZEMA

#include "tests/support/StrictArchive.h"

#include <zlib.h>

#include <cstdint>
#include <stdexcept>

namespace ZEMA::testing {

namespace {

void Demand(bool holds, const std::string& what) {
    if (!holds) throw std::runtime_error(what);
}

struct Reader {
    const std::string& bytes;

    std::string Cut(std::size_t offset, std::size_t size) const {
        Demand(offset <= bytes.size() && size <= bytes.size() - offset, "a record reaches behind the end");
        return bytes.substr(offset, size);
    }
    std::uint32_t Get(std::size_t offset, std::size_t width) const {
        const std::string field = Cut(offset, width);
        std::uint32_t value = 0;
        for (std::size_t i = width; i-- > 0;) value = value << 8 | static_cast<unsigned char>(field[i]);
        return value;
    }
};

std::string Inflate(std::string packed, std::size_t size) {
    z_stream stream{};
    std::string bytes(size + 1, '\0');
    Demand(inflateInit2(&stream, -15) == Z_OK, "no inflater");
    stream.next_in = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_in = static_cast<uInt>(packed.size());
    stream.next_out = reinterpret_cast<Bytef*>(bytes.data());
    stream.avail_out = static_cast<uInt>(bytes.size());
    const int result = inflate(&stream, Z_FINISH);
    const bool whole = result == Z_STREAM_END && stream.total_out == size && stream.avail_in == 0;
    inflateEnd(&stream);
    Demand(whole, "the data does not unpack to its size");
    bytes.resize(size);
    return bytes;
}

// Reads the member at a central header; `spans` collects what the members take in the file.
std::string ReadMember(const Reader& archive, std::size_t central, const std::string& name,
                       std::map<std::size_t, std::size_t>& spans) {
    const std::size_t local = archive.Get(central + 42, 4);
    const std::uint32_t flags = archive.Get(central + 8, 2);
    const std::uint32_t method = archive.Get(central + 10, 2);
    const std::size_t packedSize = archive.Get(central + 20, 4);
    const std::size_t size = archive.Get(central + 24, 4);
    Demand(archive.Get(local, 4) == 0x04034B50, name + ": no local header");
    Demand(archive.Cut(local + 30, archive.Get(local + 26, 2)) == name, name + ": another name in the local header");
    Demand(archive.Cut(local + 6, 4) == archive.Cut(central + 8, 4), name + ": flags or methods disagree");
    Demand((flags & 8) != 0 || archive.Cut(local + 14, 12) == archive.Cut(central + 16, 12), name + ": sums disagree");
    const std::size_t data = local + 30 + archive.Get(local + 26, 2) + archive.Get(local + 28, 2);
    spans[local] = data + packedSize + ((flags & 8) != 0 ? 12 : 0);
    const std::string packed = archive.Cut(data, packedSize);
    Demand(method == 0 || method == 8, name + ": unknown method");
    const std::string contents = method == 8 ? Inflate(packed, size) : packed;
    Demand(contents.size() == size, name + ": stored with two sizes");
    const uLong crc = crc32_z(0, reinterpret_cast<const Bytef*>(contents.data()), size);
    Demand(crc == archive.Get(central + 16, 4), name + ": wrong checksum");
    return contents;
}

}  // namespace

std::map<std::string, std::string> ReadStrictly(const std::string& bytes) {
    const Reader archive{bytes};
    const std::size_t end = bytes.rfind("PK\5\6");
    Demand(end != std::string::npos, "no end record");
    Demand(end + 22 + archive.Get(end + 20, 2) == bytes.size(), "bytes behind the comment");
    const std::size_t directory = archive.Get(end + 16, 4);
    Demand(directory + archive.Get(end + 12, 4) == end, "the directory does not end at the end record");

    std::map<std::string, std::string> members;
    std::map<std::size_t, std::size_t> spans;
    std::size_t position = directory;
    std::size_t count = 0;
    for (; position < end; ++count) {
        Demand(archive.Get(position, 4) == 0x02014B50, "no central header");
        const std::size_t nameLength = archive.Get(position + 28, 2);
        const std::string name = archive.Cut(position + 46, nameLength);
        members.emplace(name, ReadMember(archive, position, name, spans));
        position += 46 + nameLength + archive.Get(position + 30, 2) + archive.Get(position + 32, 2);
    }
    Demand(position == end && count == archive.Get(end + 10, 2) && count == archive.Get(end + 8, 2), "wrong count");
    Demand(spans.size() == count, "two members at one place");
    spans[directory] = end;
    for (auto span = spans.begin(), next = std::next(span); next != spans.end(); span = next++) {
        Demand(span->second <= next->first, "members overlap");
    }
    return members;
}

}  // namespace ZEMA::testing

#include "tests/support/ArchiveBuilder.h"

#include <zlib.h>

#include <initializer_list>
#include <numeric>
#include <random>

namespace ZEMA::testing {

namespace {

using Sums = ArchiveMember::Sums;

struct Field {
    std::size_t value;
    std::size_t width;
};

void Put(std::string& bytes, std::initializer_list<Field> fields) {
    for (const auto& [value, width] : fields) {
        for (std::size_t i = 0; i < width; ++i) bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
    }
}

// Version needed to time and date, the same in both headers; 1 January 2024, noon.
void PutCommonStart(std::string& bytes, const ArchiveMember& member) {
    const unsigned descriptor = member.sums != Sums::InHeader ? 8 : 0;
    const std::size_t method = member.deflated ? 8 : 0;
    Put(bytes, {{20, 2}, {member.flags | descriptor, 2}, {method, 2}, {12 << 11, 2}, {44 << 9 | 1 << 5 | 1, 2}});
}

}  // namespace

BuiltArchive& BuiltArchive::Set(std::size_t offset, std::size_t value, std::size_t width) {
    std::string field;
    Put(field, {{value, width}});
    bytes.replace(offset, width, field);
    return *this;
}

BuiltArchive ArchiveBuilder::Build() const {
    BuiltArchive archive;
    std::string& bytes = archive.bytes;
    std::vector<std::string> sums;  // CRC and both sizes
    for (const ArchiveMember& member : members_) {
        const std::string data = member.deflated ? DeflateBytes(member.contents) : member.contents;
        const std::size_t size = member.contents.size();
        Put(sums.emplace_back(), {{crc32_z(0, reinterpret_cast<const Bytef*>(member.contents.data()), size), 4},
                                  {data.size(), 4},
                                  {size, 4}});
        bytes += member.gapBefore;
        archive.localHeaders.push_back(bytes.size());
        Put(bytes, {{0x04034B50, 4}});
        PutCommonStart(bytes, member);
        const bool inHeader = member.sums == Sums::InHeader || member.sums == Sums::Both;
        bytes += inHeader ? sums.back() : std::string(12, '\0');
        Put(bytes, {{member.name.size(), 2}, {member.localExtra.size(), 2}});
        bytes += member.name + member.localExtra + data;
        if (member.sums == Sums::InHeader) continue;
        if (member.sums != Sums::Behind) Put(bytes, {{0x08074B50, 4}});
        if (member.sums == Sums::BehindWide) {
            bytes += sums.back().substr(0, 4);
            Put(bytes, {{data.size(), 8}, {size, 8}});
        } else {
            bytes += sums.back();
        }
    }

    std::vector<std::size_t> order = order_;
    if (order.empty()) {
        order.resize(members_.size());
        std::iota(order.begin(), order.end(), std::size_t{0});
    }
    archive.directory = bytes.size();
    archive.centralHeaders.resize(members_.size());
    for (const std::size_t number : order) {
        const ArchiveMember& member = members_[number];
        archive.centralHeaders[number] = bytes.size();
        Put(bytes, {{0x02014B50, 4}, {member.versionMadeBy, 2}});
        PutCommonStart(bytes, member);
        bytes += sums[number];
        Put(bytes, {{member.name.size(), 2}, {member.centralExtra.size(), 2}, {member.comment.size(), 2}});
        Put(bytes, {{0, 4}, {member.externalAttributes, 4}, {archive.localHeaders[number], 4}});  // 0: disk, attributes
        bytes += member.name + member.centralExtra + member.comment;
    }

    archive.endRecord = bytes.size();
    Put(bytes, {{0x06054B50, 4}, {0, 4}, {order.size(), 2}, {order.size(), 2}});
    Put(bytes, {{archive.endRecord - archive.directory, 4}, {archive.directory, 4}, {comment_.size(), 2}});
    bytes += comment_;
    return archive;
}

std::string DeflateBytes(std::string_view bytes, int level, int memoryLevel) {
    z_stream stream{};
    deflateInit2(&stream, level, Z_DEFLATED, -15, memoryLevel, Z_DEFAULT_STRATEGY);
    std::string packed(deflateBound(&stream, bytes.size()), '\0');
    std::string input(bytes);
    stream.next_in = reinterpret_cast<Bytef*>(input.data());
    stream.avail_in = static_cast<uInt>(input.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

std::string NoiseBytes(std::size_t size, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::string bytes(size, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random() & 0xFF);
    return bytes;
}

}  // namespace ZEMA::testing

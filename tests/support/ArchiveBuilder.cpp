#include "tests/support/ArchiveBuilder.h"

#include <zlib.h>

#include <numeric>
#include <random>

namespace ZEMA::testing {

namespace {

void Put(std::string& bytes, std::uint32_t value, int width) {
    for (int i = 0; i < width; ++i) bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
}

struct Sizes {
    std::uint32_t crc;
    std::uint32_t compressed;
    std::uint32_t uncompressed;
};

void PutSizes(std::string& bytes, const Sizes& sizes) {
    Put(bytes, sizes.crc, 4);
    Put(bytes, sizes.compressed, 4);
    Put(bytes, sizes.uncompressed, 4);
}

std::uint32_t Length(std::string_view text) {
    return static_cast<std::uint32_t>(text.size());
}

// Version needed to time and date, the same in both headers; 1 January 2024, noon.
void PutCommonStart(std::string& bytes, const ArchiveMember& member) {
    const bool behind = member.sums != ArchiveMember::Sums::InHeader;
    Put(bytes, 20, 2);
    Put(bytes, member.flags | (behind ? 8u : 0u), 2);
    Put(bytes, member.deflated ? 8 : 0, 2);
    Put(bytes, 12 << 11, 2);
    Put(bytes, (2024 - 1980) << 9 | 1 << 5 | 1, 2);
}

}  // namespace

BuiltArchive& BuiltArchive::Set16(std::size_t offset, std::uint16_t value) {
    std::string field;
    Put(field, value, 2);
    bytes.replace(offset, 2, field);
    return *this;
}

BuiltArchive& BuiltArchive::Set32(std::size_t offset, std::uint32_t value) {
    std::string field;
    Put(field, value, 4);
    bytes.replace(offset, 4, field);
    return *this;
}

ArchiveBuilder& ArchiveBuilder::Stored(std::string_view name, std::string_view contents) {
    ArchiveMember member;
    member.name = name;
    member.contents = contents;
    return Add(std::move(member));
}

ArchiveBuilder& ArchiveBuilder::Deflated(std::string_view name, std::string_view contents) {
    ArchiveMember member;
    member.name = name;
    member.contents = contents;
    member.deflated = true;
    return Add(std::move(member));
}

ArchiveBuilder& ArchiveBuilder::Folder(std::string_view name) {
    ArchiveMember member;
    member.name = name;
    member.externalAttributes = 0040755u << 16 | 0x10;
    return Add(std::move(member));
}

ArchiveBuilder& ArchiveBuilder::Add(ArchiveMember member) {
    members_.push_back(std::move(member));
    return *this;
}

ArchiveBuilder& ArchiveBuilder::Comment(std::string_view comment) {
    comment_ = comment;
    return *this;
}

ArchiveBuilder& ArchiveBuilder::DirectoryOrder(std::vector<std::size_t> order) {
    directoryOrder_ = std::move(order);
    return *this;
}

BuiltArchive ArchiveBuilder::Build() const {
    BuiltArchive archive;
    std::string& bytes = archive.bytes;
    std::vector<Sizes> sizes;
    for (const ArchiveMember& member : members_) {
        const std::string data = member.deflated ? DeflateBytes(member.contents) : member.contents;
        const auto* contents = reinterpret_cast<const Bytef*>(member.contents.data());
        sizes.push_back({static_cast<std::uint32_t>(crc32(0, contents, Length(member.contents))), Length(data),
                         Length(member.contents)});
        const bool inHeader = member.sums == ArchiveMember::Sums::InHeader || member.sums == ArchiveMember::Sums::Both;
        bytes += member.gapBefore;
        archive.localHeaders.push_back(bytes.size());
        Put(bytes, 0x04034B50, 4);
        PutCommonStart(bytes, member);
        PutSizes(bytes, inHeader ? sizes.back() : Sizes{0, 0, 0});
        Put(bytes, Length(member.name), 2);
        Put(bytes, Length(member.localExtra), 2);
        bytes += member.name + member.localExtra + data;
        if (member.sums == ArchiveMember::Sums::InHeader) continue;
        if (member.sums != ArchiveMember::Sums::Behind) Put(bytes, 0x08074B50, 4);
        PutSizes(bytes, sizes.back());
    }

    std::vector<std::size_t> order = directoryOrder_;
    if (order.empty()) {
        order.resize(members_.size());
        std::iota(order.begin(), order.end(), std::size_t{0});
    }
    archive.directory = bytes.size();
    archive.centralHeaders.resize(members_.size());
    for (const std::size_t number : order) {
        const ArchiveMember& member = members_[number];
        archive.centralHeaders[number] = bytes.size();
        Put(bytes, 0x02014B50, 4);
        Put(bytes, member.versionMadeBy, 2);
        PutCommonStart(bytes, member);
        PutSizes(bytes, sizes[number]);
        Put(bytes, Length(member.name), 2);
        Put(bytes, Length(member.centralExtra), 2);
        Put(bytes, Length(member.comment), 2);
        Put(bytes, 0, 2);  // disk
        Put(bytes, 0, 2);  // internal attributes
        Put(bytes, member.externalAttributes, 4);
        Put(bytes, static_cast<std::uint32_t>(archive.localHeaders[number]), 4);
        bytes += member.name + member.centralExtra + member.comment;
    }

    archive.endRecord = bytes.size();
    Put(bytes, 0x06054B50, 4);
    Put(bytes, 0, 4);  // disks
    Put(bytes, static_cast<std::uint32_t>(order.size()), 2);
    Put(bytes, static_cast<std::uint32_t>(order.size()), 2);
    Put(bytes, static_cast<std::uint32_t>(archive.endRecord - archive.directory), 4);
    Put(bytes, static_cast<std::uint32_t>(archive.directory), 4);
    Put(bytes, Length(comment_), 2);
    bytes += comment_;
    return archive;
}

std::string DeflateBytes(std::string_view bytes) {
    z_stream stream{};
    deflateInit2(&stream, 6, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
    std::string packed(deflateBound(&stream, bytes.size()), '\0');
    std::string input(bytes);
    stream.next_in = reinterpret_cast<Bytef*>(input.data());
    stream.avail_in = Length(bytes);
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = Length(packed);
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

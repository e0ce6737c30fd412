// ZIP archives for tests, made member by member.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ZEMA::testing {

// One member and how it is written. The defaults are a stored file as made on Unix, mode 0644.
struct ArchiveMember {
    // How CRC and sizes are told: in the local header; or behind the data, with flag bit 3, as 12 bytes, with a
    // signature before them, or with sizes of 8 bytes as well; or in both places.
    enum class Sums { InHeader, Behind, BehindSigned, BehindWide, Both };

    std::string name{};
    std::string contents{};
    bool deflated = false;
    Sums sums = Sums::InHeader;
    std::uint16_t flags = 0;  // bit 3 comes from `sums`
    std::uint16_t versionMadeBy = 0x031E;
    std::uint32_t externalAttributes = 0100644u << 16;
    std::string localExtra{};
    std::string centralExtra{};
    std::string comment{};
    std::string gapBefore{};  // bytes that belong to nobody, before the local header
};

// The bytes of an archive and where its records stand, for tests that go on to break one of them. The members are
// counted in the order in which they were added.
struct BuiltArchive {
    std::string bytes;
    std::vector<std::size_t> localHeaders;
    std::vector<std::size_t> centralHeaders;
    std::size_t directory = 0;
    std::size_t endRecord = 0;

    // Overwrites a field.
    BuiltArchive& Set16(std::size_t offset, std::uint16_t value) { return Set(offset, value, 2); }
    BuiltArchive& Set32(std::size_t offset, std::uint32_t value) { return Set(offset, value, 4); }
    BuiltArchive& Set(std::size_t offset, std::size_t value, std::size_t width);
};

// Builds archives that every reader accepts: `ArchiveBuilder().Stored("a.txt", "hello").Deflated("b.txt",
// text).Bytes()`.
class ArchiveBuilder {
public:
    ArchiveBuilder& Stored(std::string_view name, std::string_view contents) {
        return Add({.name = std::string(name), .contents = std::string(contents)});
    }
    ArchiveBuilder& Deflated(std::string_view name, std::string_view contents) {
        return Add({.name = std::string(name), .contents = std::string(contents), .deflated = true});
    }
    ArchiveBuilder& Folder(std::string_view name) {  // with its "/"
        return Add({.name = std::string(name), .externalAttributes = 0040755u << 16 | 0x10});
    }
    ArchiveBuilder& Add(ArchiveMember member) { return members_.push_back(std::move(member)), *this; }

    ArchiveBuilder& Comment(std::string_view comment) { return comment_ = comment, *this; }

    // Lists the members in the directory in this order, by their numbers, whatever their order in the file.
    ArchiveBuilder& DirectoryOrder(std::vector<std::size_t> order) { return order_ = std::move(order), *this; }

    BuiltArchive Build() const;
    std::string Bytes() const { return Build().bytes; }

private:
    std::vector<ArchiveMember> members_;
    std::vector<std::size_t> order_;
    std::string comment_;
};

// A raw deflate stream of the bytes, as members carry it.
std::string DeflateBytes(std::string_view bytes, int level = 6, int memoryLevel = 8);

// Bytes that look random, the same ones for the same seed; they do not compress.
std::string NoiseBytes(std::size_t size, std::uint32_t seed = 1);

}  // namespace ZEMA::testing

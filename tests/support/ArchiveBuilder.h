// ZIP archives for tests, made member by member.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ZEMA::testing {

// One member and how it is written. The defaults are a stored file as made on Unix, mode 0644.
struct ArchiveMember {
    // How CRC and sizes are told: in the local header; or behind the data, with flag bit 3, as 12 bytes or with a
    // signature before them; or in both places.
    enum class Sums { InHeader, Behind, BehindSigned, Both };

    std::string name;
    std::string contents;
    bool deflated = false;
    Sums sums = Sums::InHeader;
    std::uint16_t flags = 0;  // bit 3 comes from `sums`
    std::uint16_t versionMadeBy = 0x031E;
    std::uint32_t externalAttributes = 0100644u << 16;
    std::string localExtra;
    std::string centralExtra;
    std::string comment;
    std::string gapBefore;  // bytes that belong to nobody, before the local header
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
    BuiltArchive& Set16(std::size_t offset, std::uint16_t value);
    BuiltArchive& Set32(std::size_t offset, std::uint32_t value);
};

// Builds archives that every reader accepts: `ArchiveBuilder().Stored("a.txt", "hello").Deflated("b.txt",
// text).Bytes()`.
class ArchiveBuilder {
public:
    ArchiveBuilder& Stored(std::string_view name, std::string_view contents);
    ArchiveBuilder& Deflated(std::string_view name, std::string_view contents);
    ArchiveBuilder& Folder(std::string_view name);  // with its "/"
    ArchiveBuilder& Add(ArchiveMember member);

    ArchiveBuilder& Comment(std::string_view comment);

    // Lists the members in the directory in this order, by their numbers, whatever their order in the file.
    ArchiveBuilder& DirectoryOrder(std::vector<std::size_t> order);

    BuiltArchive Build() const;
    std::string Bytes() const { return Build().bytes; }

private:
    std::vector<ArchiveMember> members_;
    std::vector<std::size_t> directoryOrder_;
    std::string comment_;
};

// A raw deflate stream of the bytes, as members carry it.
std::string DeflateBytes(std::string_view bytes);

// Bytes that look random, the same ones for the same seed; they do not compress.
std::string NoiseBytes(std::size_t size, std::uint32_t seed = 1);

}  // namespace ZEMA::testing

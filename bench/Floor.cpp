// The least that any importer has to do with documents, as a program of its own: what ours is measured against. Each is
// read, its first member inflated with zlib, and the text given to expat without handlers.
//
// Knows just enough of ZIP for the documents that bench/run makes.
#include <expat.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <stdexcept>

namespace {

struct Free {
    void operator()(void* block) const { std::free(block); }
};
using Bytes = std::unique_ptr<unsigned char, Free>;

Bytes Allocate(std::size_t size) {
    return Bytes(static_cast<unsigned char*>(std::malloc(size)));
}

void Require(bool condition, const char* what) {
    if (!condition) throw std::runtime_error(what);
}

std::uint32_t Little(const unsigned char* bytes, int count) {
    std::uint32_t value = 0;
    for (int i = count - 1; i >= 0; --i) value = value << 8 | bytes[i];
    return value;
}

struct Member {
    Bytes archive;
    const unsigned char* data;
    std::uint32_t packedSize;
    std::uint32_t size;
};

// The sizes come from the central directory, the place of the data from the local header.
Member ReadFirstMember(const char* document) {
    const int descriptor = open(document, O_RDONLY | O_CLOEXEC);
    Require(descriptor >= 0, "cannot open the document");
    struct stat status {};
    Require(fstat(descriptor, &status) == 0, "cannot stat the document");
    const auto size = static_cast<std::size_t>(status.st_size);
    Member member{Allocate(size), nullptr, 0, 0};
    const ssize_t count = read(descriptor, member.archive.get(), size);
    close(descriptor);
    Require(count == static_cast<ssize_t>(size) && size > 22, "cannot read the document");
    const unsigned char* bytes = member.archive.get();
    const unsigned char* central = bytes + Little(bytes + size - 22 + 16, 4);
    member.packedSize = Little(central + 20, 4);
    member.size = Little(central + 24, 4);
    member.data = bytes + 30 + Little(bytes + 26, 2) + Little(bytes + 28, 2);
    return member;
}

Bytes Inflate(const Member& member) {
    Bytes text = Allocate(member.size);
    z_stream stream{};
    Require(inflateInit2(&stream, -15) == Z_OK, "no inflater");
    stream.next_in = const_cast<unsigned char*>(member.data);
    stream.avail_in = member.packedSize;
    stream.next_out = text.get();
    stream.avail_out = member.size;
    const int result = inflate(&stream, Z_FINISH);
    inflateEnd(&stream);
    Require(result == Z_STREAM_END, "the member does not inflate");
    return text;
}

void RunFloor(const char* document) {
    std::uint32_t size = 0;
    Bytes text;
    {
        const Member member = ReadFirstMember(document);
        size = member.size;
        text = Inflate(member);
    }
    XML_Parser parser = XML_ParserCreate(nullptr);
    const XML_Status status = XML_Parse(parser, reinterpret_cast<const char*>(text.get()), static_cast<int>(size), 1);
    XML_ParserFree(parser);
    Require(status == XML_STATUS_OK, "the model does not parse");
}

}  // namespace

int main(int count, char** documents) {
    try {
        for (int index = 1; index < count; ++index) RunFloor(documents[index]);
    } catch (const std::exception& error) {
        std::cerr << "floor: " << error.what() << '\n';
        return 1;
    }
    return 0;
}

// What a worker says, which may be anything: frames, and the records and documents in them.
#include <optional>
#include <vector>

#include "fuzz/Fuzzing.h"
#include "host/workers/Frames.h"

namespace ZEMA {

namespace {

using fuzzing::Require;

// Nothing is taken but what encoding makes, to the byte.
void Decode(std::string_view bytes) {
    if (const auto record = DecodeRecord(bytes)) Require(EncodeRecord(*record) == bytes, "a record is what it was");
    if (const auto documents = DecodeDocuments(bytes)) {
        Require(EncodeDocuments(*documents) == bytes, "documents are what they were");
    }
}

// The stream in pieces of one size, as far as it is frames.
std::string Read(std::string_view stream, std::size_t pieceSize) {
    FrameReader reader(1000);
    std::string frames;
    for (std::size_t start = 0; start < stream.size(); start += pieceSize) {
        reader.Append(stream.substr(start, pieceSize));
        while (const std::optional<Frame> frame = reader.Next()) {
            Require(frame->content.size() <= 1000, "no frame is larger than the limit");
            AppendFrame(frame->kind, frame->content, frames);
            Decode(frame->content);
        }
    }
    Require(reader.Broken() || frames.size() + reader.Size() == stream.size(), "nothing is lost between frames");
    return frames;
}

}  // namespace

}  // namespace ZEMA

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ZEMA;
    const std::string_view bytes = fuzzing::TextOf(data, size);
    Decode(bytes);
    const std::string whole = Read(bytes, std::max<std::size_t>(size, 1));
    Require(bytes.starts_with(whole), "frames are the bytes that they came as");
    Require(Read(bytes, 7) == whole, "in pieces or at once, the frames are the same");
    return 0;
}

// What the program and its workers say to each other: frames over a stream, and values in them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/documents/DocumentFinder.h"
#include "host/documents/DocumentRecord.h"

namespace ZEMA {

// What a frame is, by its first byte behind the length.
enum class FrameKind : std::uint8_t {
    Content,     // a request, or the answer to one
    Last,        // an answer behind which the worker leaves; what waits behind it goes to another one
    StillThere,  // empty: the answer takes long, but the worker gets on with it
    MissingWall  // what could not be put up when the worker was confined
};

struct Frame {
    FrameKind kind = FrameKind::Content;
    std::string content;
};

// The frame as bytes: the length of its content in 32 bits of this machine, its kind, its content. A name may hold
// anything, so nothing separates frames but their lengths.
void AppendFrame(FrameKind kind, std::string_view content, std::string& bytes);

// Cuts a stream into frames. The stream may be hostile: once something in it is no frame, or has more content than
// `limit`, it is broken for good.
class FrameReader {
public:
    explicit FrameReader(std::size_t limit) : limit_(limit) {}

    void Append(std::string_view bytes);

    // The next whole frame; none while it has not come, or when the stream is broken.
    std::optional<Frame> Next();

    bool Broken() const { return broken_; }
    void Break() { broken_ = true; }                             // of a frame that has no place where it came
    std::size_t Size() const { return bytes_.size() - start_; }  // bytes that wait

private:
    std::size_t limit_;
    std::string bytes_;
    std::size_t start_ = 0;  // of what waits
    bool broken_ = false;
};

// Values as the content of frames. Decoding takes any bytes, and answers nothing for those that encoding never makes:
// among them texts of attributes that are not UTF-8, and values nested deeper than any plug-in's.
std::string EncodeRecord(const DocumentRecord& record);
std::optional<DocumentRecord> DecodeRecord(std::string_view bytes);
std::string EncodeDocuments(const std::vector<FoundDocument>& documents);
std::optional<std::vector<FoundDocument>> DecodeDocuments(std::string_view bytes);

}  // namespace ZEMA

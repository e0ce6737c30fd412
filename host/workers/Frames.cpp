#include "host/workers/Frames.h"

#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>
#include <variant>

#include "host/system/Utf8Text.h"

namespace ZEMA {

namespace {

constexpr std::size_t kHeadSize = sizeof(std::uint32_t) + 1;
constexpr int kDeepestValue = 16;
// In a record. A value takes twenty times the room of its shortest form, and no model that a worker has the memory for
// has as many.
constexpr std::size_t kMostValues = std::size_t{1} << 22;

// Puts values behind each other. Both sides are one program, so numbers stand as the machine has them.
class Encoder {
public:
    template <class Number>
    void Put(Number number) {
        static_assert(std::is_arithmetic_v<Number>);
        bytes_.append(reinterpret_cast<const char*>(&number), sizeof number);
    }
    void Put(std::string_view text) {
        PutCount(text.size());
        bytes_.append(text);
    }
    void PutCount(std::size_t count) { Put(static_cast<std::uint32_t>(count)); }

    void Put(const Failure& failure) {
        Put(static_cast<std::uint8_t>(failure.kind));
        Put(std::string_view(failure.text));
        Put(failure.error);
    }

    void Put(const Value& value) {
        Put(static_cast<std::uint8_t>(value.content.index()));
        std::visit([this](const auto& content) { PutContent(content); }, value.content);
    }

    void Put(const Value::Dictionary& dictionary) {
        PutCount(dictionary.size());
        for (const Value::Item& item : dictionary) {
            Put(std::string_view(item.key));
            Put(item.value);
        }
    }

    std::string Take() { return std::move(bytes_); }

private:
    void PutContent(const std::string& text) { Put(std::string_view(text)); }
    void PutContent(const Value::Dictionary& dictionary) { Put(dictionary); }
    void PutContent(const Value::List& list) {
        PutCount(list.size());
        for (const Value& value : list) Put(value);
    }
    template <class Number>
    void PutContent(Number number) {
        Put(number);
    }

    std::string bytes_;
};

// Takes them apart again. After a failure everything is false.
class Decoder {
public:
    explicit Decoder(std::string_view bytes) : rest_(bytes) {}

    template <class Number>
    bool Get(Number& number) {
        if (rest_.size() < sizeof number) return Fail();
        std::memcpy(&number, rest_.data(), sizeof number);
        rest_.remove_prefix(sizeof number);
        return true;
    }
    bool Get(bool& truth) {
        std::uint8_t byte = 0;
        if (!Get(byte) || byte > 1) return Fail();
        truth = byte != 0;
        return true;
    }
    bool Get(std::string& text) {
        std::uint32_t size = 0;
        if (!Get(size) || rest_.size() < size) return Fail();
        text.assign(rest_.substr(0, size));
        rest_.remove_prefix(size);
        return true;
    }
    bool GetUtf8(std::string& text) { return Get(text) && (IsUtf8(text) || Fail()); }

    bool Get(Failure& failure) {
        std::uint8_t kind = 0;
        if (!Get(kind) || kind > static_cast<std::uint8_t>(FailureKind::Refused)) return Fail();
        failure.kind = static_cast<FailureKind>(kind);
        return Get(failure.text) && Get(failure.error);
    }

    bool Get(Value& value, int depth) {
        std::uint8_t kind = 0;
        if (depth > kDeepestValue || ++values_ > kMostValues || !Get(kind)) return Fail();
        switch (kind) {
            case 0:
                return GetUtf8(value.content.emplace<0>());
            case 1:
                return Get(value.content.emplace<1>());
            case 2:
                return Get(value.content.emplace<2>());
            case 3:
                return Get(value.content.emplace<3>());
            case 4:
                return GetMany(value.content.emplace<4>(), [&](Value& item) { return Get(item, depth + 1); });
            case 5:
                return Get(value.content.emplace<5>(), depth);
            default:
                return Fail();
        }
    }
    bool Get(Value::Dictionary& dictionary, int depth) {
        return GetMany(dictionary, [&](Value::Item& item) { return GetUtf8(item.key) && Get(item.value, depth + 1); });
    }

    // The count is a claim: elements are made as they are found.
    template <class List, class GetOne>
    bool GetMany(List& list, GetOne getOne) {
        std::uint32_t count = 0;
        if (!Get(count)) return false;
        for (; count > 0; --count) {
            if (!getOne(list.emplace_back())) return false;
        }
        return true;
    }

    bool AtEnd() const { return rest_.empty(); }

private:
    bool Fail() {
        rest_ = {};
        return false;
    }

    std::string_view rest_;
    std::size_t values_ = 0;  // so far
};

static_assert(std::is_same_v<std::variant_alternative_t<5, decltype(Value::content)>, Value::Dictionary>);

}  // namespace

void AppendFrame(FrameKind kind, std::string_view content, std::string& bytes) {
    Encoder head;
    head.PutCount(content.size());
    head.Put(static_cast<std::uint8_t>(kind));
    bytes += head.Take();
    bytes += content;
}

void FrameReader::Append(std::string_view bytes) {
    if (broken_) return;
    // What was read goes before there is much of it, but not at every frame.
    if (start_ > bytes_.size() / 2) bytes_.erase(0, std::exchange(start_, 0));
    bytes_ += bytes;
}

std::optional<Frame> FrameReader::Next() {
    if (broken_ || Size() < kHeadSize) return std::nullopt;
    Decoder head(std::string_view(bytes_).substr(start_, kHeadSize));
    std::uint32_t size = 0;
    std::uint8_t kind = 0;
    (void)(head.Get(size) && head.Get(kind));
    broken_ = size > limit_ || kind > static_cast<std::uint8_t>(FrameKind::MissingWall);
    if (broken_ || Size() - kHeadSize < size) return std::nullopt;
    Frame frame{static_cast<FrameKind>(kind), bytes_.substr(start_ + kHeadSize, size)};
    start_ += kHeadSize + size;
    return frame;
}

std::string EncodeRecord(const DocumentRecord& record) {
    Encoder encoder;
    encoder.Put(std::string_view(record.path));
    encoder.Put(record.imported);
    encoder.Put(record.attributes);
    encoder.Put(std::string_view(record.error));
    encoder.Put(record.passing);
    encoder.Put(record.repaired);
    return encoder.Take();
}

std::optional<DocumentRecord> DecodeRecord(std::string_view bytes) {
    Decoder decoder(bytes);
    DocumentRecord record;
    const bool whole = decoder.Get(record.path) && decoder.Get(record.imported) && decoder.Get(record.attributes, 0) &&
                       decoder.Get(record.error) && decoder.Get(record.passing) && decoder.Get(record.repaired) &&
                       decoder.AtEnd();
    return whole ? std::optional(std::move(record)) : std::nullopt;
}

std::string EncodeDocuments(const std::vector<FoundDocument>& documents) {
    Encoder encoder;
    encoder.PutCount(documents.size());
    for (const FoundDocument& document : documents) {
        encoder.Put(std::string_view(document.path));
        encoder.Put(document.failure);
    }
    return encoder.Take();
}

std::optional<std::vector<FoundDocument>> DecodeDocuments(std::string_view bytes) {
    Decoder decoder(bytes);
    std::vector<FoundDocument> documents;
    const auto getOne = [&](FoundDocument& document) {
        return decoder.Get(document.path) && decoder.Get(document.failure);
    };
    const bool whole = decoder.GetMany(documents, getOne) && decoder.AtEnd();
    return whole ? std::optional(std::move(documents)) : std::nullopt;
}

}  // namespace ZEMA

#include "host/workers/Frames.h"

#include <gtest/gtest.h>

#include "host/print/JsonWriter.h"

namespace ZEMA::testing {

namespace {

DocumentRecord Record() {
    DocumentRecord record{"a\nb\xFF", true, {}, "why", true};
    record.attributes.push_back({"text", {std::string("Zoë\0", 5)}});
    record.attributes.push_back({"list", {Value::List{{std::int64_t{-7}}, {2.5}, {true}}}});
    record.attributes.push_back({"dictionary", {Value::Dictionary{{"de", {std::string("Tor")}}}}});
    return record;
}

std::string JsonOfRecord(const DocumentRecord& record) {
    return JsonSequence(false).Item(Value{record.attributes});
}

}  // namespace

TEST(Frames, BringRecordsAcross) {
    const DocumentRecord record = Record();
    const std::optional<DocumentRecord> decoded = DecodeRecord(EncodeRecord(record));
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->path, record.path);
    EXPECT_TRUE(decoded->imported && decoded->passing);
    EXPECT_EQ(decoded->error, "why");
    EXPECT_EQ(JsonOfRecord(*decoded), JsonOfRecord(record));
    const auto found = DecodeDocuments(EncodeDocuments({{"x", {}}, {"y", SystemFailure(EIO)}}));
    ASSERT_TRUE(found && found->size() == 2);
    EXPECT_EQ(found->at(1).failure.error, EIO);
    EXPECT_EQ(found->at(1).failure.kind, FailureKind::System);
}

TEST(Frames, RefuseWhatEncodingNeverMakes) {
    const std::string good = EncodeRecord(Record());
    for (std::size_t size = 0; size < good.size(); ++size) EXPECT_FALSE(DecodeRecord(good.substr(0, size))) << size;
    EXPECT_FALSE(DecodeRecord(good + '\0'));
    for (std::size_t i = 0; i < good.size() * 8; ++i) {
        std::string flipped = good;
        flipped[i / 8] = static_cast<char>(flipped[i / 8] ^ 1 << i % 8);
        if (const auto record = DecodeRecord(flipped)) (void)JsonOfRecord(*record);
    }
    DocumentRecord record = Record();
    record.attributes[0].value = {std::string("\xFF")};
    EXPECT_FALSE(DecodeRecord(EncodeRecord(record))) << "a text that is not UTF-8";
    Value deep = {true};
    for (int i = 0; i < 100; ++i) deep = {Value::List{deep}};
    record.attributes[0].value = deep;
    EXPECT_FALSE(DecodeRecord(EncodeRecord(record))) << "nested more deeply than the stack bears";
    record.attributes[0].value = {Value::List(1 << 22, Value{true})};
    EXPECT_FALSE(DecodeRecord(EncodeRecord(record))) << "more values than a model has";
}

TEST(Frames, CutAStreamAtAnyPlace) {
    std::string stream;
    AppendFrame(FrameKind::Content, "one", stream);
    AppendFrame(FrameKind::StillThere, "", stream);
    AppendFrame(FrameKind::Last, "three", stream);
    FrameReader reader(5);
    std::string seen;
    for (const char byte : stream) {
        reader.Append({&byte, 1});
        while (const std::optional<Frame> frame = reader.Next()) seen += frame->content + ";";
    }
    EXPECT_EQ(seen, "one;;three;");
    EXPECT_FALSE(reader.Broken());

    const struct {
        const char* what;
        std::string bytes;
    } rows[] = {
        {"more than may be", std::string("\x06\0\0\0\0", 5)},
        {"a kind that there is not", std::string("\0\0\0\0\x09", 5)},
    };
    for (const auto& row : rows) {
        FrameReader broken(5);
        broken.Append(row.bytes + stream);
        EXPECT_FALSE(broken.Next()) << row.what;
        EXPECT_TRUE(broken.Broken()) << row.what;
        EXPECT_FALSE(broken.Next()) << row.what;
    }
}

}  // namespace ZEMA::testing

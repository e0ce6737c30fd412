#include "host/documents/RecordWriter.h"

#include "host/print/AttributeText.h"
#include "host/print/JsonText.h"
#include "host/print/PropertyList.h"
#include "host/system/Utf8Text.h"

namespace ZEMA {

namespace {

// Only what was imported; the failures are on standard error.
class TextRecordWriter : public RecordWriter {
public:
    explicit TextRecordWriter(bool several) : several_(several) {}

    std::string Head() override { return {}; }
    std::string Record(const DocumentRecord& record) override {
        if (!record.imported) return {};
        const std::string text = AttributeText(record.attributes);
        if (!several_) return text;
        const std::string gap = first_ ? "" : "\n";
        first_ = false;
        return gap + EscapeControls(ReplaceInvalidUtf8(record.path)) + ":\n" + text;
    }
    std::string Tail() override { return {}; }

private:
    bool several_;
    bool first_ = true;
};

class JsonRecordWriter : public RecordWriter {
public:
    explicit JsonRecordWriter(bool asArray) : sequence_(asArray) {}

    std::string Head() override { return sequence_.Head(); }
    std::string Record(const DocumentRecord& record) override { return sequence_.Item({ObjectOf(record)}); }
    std::string Tail() override { return sequence_.Tail(); }

private:
    JsonSequence sequence_;
};

class PropertyListRecordWriter : public RecordWriter {
public:
    std::string Head() override { return PropertyListHead() + "<array>\n"; }
    std::string Record(const DocumentRecord& record) override {
        std::string text;
        AppendPropertyListValue({ObjectOf(record)}, 1, text);
        return text;
    }
    std::string Tail() override { return "</array>\n" + PropertyListTail(); }
};

}  // namespace

std::unique_ptr<RecordWriter> NewRecordWriter(RecordFormat format, bool several) {
    switch (format) {
        case RecordFormat::Json:
            return std::make_unique<JsonRecordWriter>(true);
        case RecordFormat::Ndjson:
            return std::make_unique<JsonRecordWriter>(false);
        case RecordFormat::PropertyList:
            return std::make_unique<PropertyListRecordWriter>();
        case RecordFormat::Text:
            break;
    }
    return std::make_unique<TextRecordWriter>(several);
}

}  // namespace ZEMA

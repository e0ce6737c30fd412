#include "host/documents/DocumentRecord.h"

#include <algorithm>

#include "host/documents/DocumentCheck.h"
#include "host/documents/DocumentPath.h"
#include "host/print/AttributeText.h"
#include "host/print/CsvText.h"
#include "host/print/JsonWriter.h"
#include "host/print/PropertyList.h"
#include "host/system/Utf8Text.h"
#include "importer/AttributeSet.h"
#include "platform/Foundation/CFPointer.h"

namespace ZEMA {

namespace {

using Foundation::CFPointer;

// The plug-in opens archives for changes where it can, and so is asked about nothing but files with something in them.
Failure Import(const PluginHost& host, const std::string& path, Value::Dictionary& imported) {
    if (KindOfDocument(path) != DocumentKind::File) return WhyNotImported(path);
    const Result<DocumentPath> whole = DocumentPath::Of(path);
    if (!whole) return whole.Why();
    const CFPointer<CFMutableDictionaryRef> attributes(CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    if (!host.Import(whole->Text(), attributes.Get())) return WhyNotImported(path);
    imported = AttributesOf(attributes.Get());
    return {};
}

// Whether another try may end otherwise.
bool Passes(const Failure& failure) {
    return failure.kind == FailureKind::System || failure.kind == FailureKind::Limit;
}

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

// One object for each record, whether it was imported or not.
class JsonRecordWriter : public RecordWriter {
public:
    explicit JsonRecordWriter(bool asArray) : sequence_(asArray) {}

    std::string Head() override { return sequence_.Head(); }
    std::string Record(const DocumentRecord& record) override { return sequence_.Item({ObjectOf(record)}); }
    std::string Tail() override { return sequence_.Tail(); }

private:
    JsonSequence sequence_;
};

// One list of such objects.
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

std::vector<std::string> KnownNames() {
    std::vector<std::string> names;
    for (const CFStringRef name : AttributeNames()) names.push_back(Utf8Of(name));
    return names;
}

// A line for each record, with a column for each attribute.
class CsvRecordWriter : public RecordWriter {
public:
    explicit CsvRecordWriter(std::vector<std::string> names) : names_(std::move(names)) {}

    std::string Head() override {
        std::vector<std::string> cells = {"path", "imported"};
        cells.insert(cells.end(), names_.begin(), names_.end());
        cells.insert(cells.end(), {"error", "repaired", "away"});
        return CsvLine(cells);
    }
    std::string Record(const DocumentRecord& record) override {
        std::vector<std::string> cells = {CsvCell({ReplaceInvalidUtf8(record.path)}), CsvCell({record.imported})};
        for (const std::string& name : names_) {
            const Value* const value = Find(record.attributes, name);
            cells.push_back(value == nullptr ? std::string() : CsvCell(*value));
        }
        cells.insert(cells.end(),
                     {CsvCell({ReplaceInvalidUtf8(record.error)}), CsvCell({record.repaired}), CsvCell({record.away})});
        return CsvLine(cells);
    }
    std::string Tail() override { return {}; }

private:
    const std::vector<std::string> names_;
};

// Texts and numbers and nothing else. Before a line end a text has none in it; before a zero byte it is as it is.
class RawRecordWriter : public RecordWriter {
public:
    explicit RawRecordWriter(char end) : end_(end) {}

    std::string Head() override { return {}; }
    std::string Record(const DocumentRecord& record) override {
        std::string texts;
        for (const Value::Item& attribute : record.attributes) Append(attribute.value, texts);
        return texts;
    }
    std::string Tail() override { return {}; }

private:
    void Append(const Value& value, std::string& texts) const {
        if (const Value::List* const list = value.AsList()) {
            for (const Value& item : *list) Append(item, texts);
        } else if (const Value::Dictionary* const dictionary = value.AsDictionary()) {
            for (const Value::Item& item : *dictionary) Append(item.value, texts);
        } else {
            const std::string text = value.AsText() != nullptr ? *value.AsText() : JsonText(value);
            texts += end_ == '\n' ? EscapeControls(text) : text;
            texts += end_;
        }
    }

    char end_;
};

// Hands on records with some attributes only.
class SelectedRecordWriter : public RecordWriter {
public:
    SelectedRecordWriter(std::unique_ptr<RecordWriter> writer, std::vector<std::string> names)
        : writer_(std::move(writer)), names_(std::move(names)) {}

    std::string Head() override { return writer_->Head(); }
    std::string Record(const DocumentRecord& record) override {
        DocumentRecord selected = record;
        selected.attributes.clear();
        for (const std::string& name : names_) {
            const Value* const value = Find(record.attributes, name);
            if (value != nullptr) selected.attributes.push_back({name, *value});
        }
        return writer_->Record(selected);
    }
    std::string Tail() override { return writer_->Tail(); }

private:
    std::unique_ptr<RecordWriter> writer_;
    const std::vector<std::string> names_;
};

// The bytes of the paths.
class PathRecordWriter : public RecordWriter {
public:
    explicit PathRecordWriter(char end) : end_(end) {}

    std::string Head() override { return {}; }
    std::string Record(const DocumentRecord& record) override { return record.path + end_; }
    std::string Tail() override { return {}; }

private:
    char end_;
};

std::unique_ptr<RecordWriter> NewWriter(RecordFormat format, bool several, const std::vector<std::string>& names) {
    switch (format) {
        case RecordFormat::Json:
            return std::make_unique<JsonRecordWriter>(true);
        case RecordFormat::Ndjson:
            return std::make_unique<JsonRecordWriter>(false);
        case RecordFormat::PropertyList:
            return std::make_unique<PropertyListRecordWriter>();
        case RecordFormat::Csv:
            return std::make_unique<CsvRecordWriter>(names.empty() ? KnownNames() : names);
        case RecordFormat::Paths:
            return std::make_unique<PathRecordWriter>('\n');
        case RecordFormat::PathsWithZeroBytes:
            return std::make_unique<PathRecordWriter>('\0');
        case RecordFormat::Raw:
            return std::make_unique<RawRecordWriter>('\n');
        case RecordFormat::RawWithZeroBytes:
            return std::make_unique<RawRecordWriter>('\0');
        case RecordFormat::Text:
            break;
    }
    return std::make_unique<TextRecordWriter>(several);
}

}  // namespace

Value::Dictionary AttributesOf(CFDictionaryRef attributes) {
    Value all = ValueOf(attributes);
    auto& rest = std::get<Value::Dictionary>(all.content);
    Value::Dictionary ordered;
    for (const CFStringRef name : AttributeNames()) {
        const std::string key = Utf8Of(name);
        const auto found = std::find_if(rest.begin(), rest.end(), [&](const auto& item) { return item.key == key; });
        if (found == rest.end()) continue;
        ordered.push_back(std::move(*found));
        rest.erase(found);
    }
    std::move(rest.begin(), rest.end(), std::back_inserter(ordered));
    return ordered;
}

DocumentRecord ImportDocument(const PluginHost& host, const FoundDocument& document) {
    DocumentRecord record{document.path, false, {}, {}};
    Failure failure = document.failure;
    try {
        if (!failure) failure = Import(host, document.path, record.attributes);
    } catch (...) {
        // One document that is too large for the memory must not take the others with it.
        failure = {FailureKind::Limit, ReasonOfException()};
    }
    record.imported = !failure;
    record.error = failure.text;
    record.passing = Passes(failure);
    return record;
}

Value::Dictionary ObjectOf(const DocumentRecord& record) {
    Value::Dictionary object;
    object.push_back({"path", {ReplaceInvalidUtf8(record.path)}});
    if (!IsUtf8(record.path)) object.push_back({"pathBytes", {Base64Of(record.path)}});
    object.push_back({"imported", {record.imported}});
    object.push_back({"attributes", {record.attributes}});
    if (!record.imported || !record.error.empty()) object.push_back({"error", {ReplaceInvalidUtf8(record.error)}});
    if (record.repaired) object.push_back({"repaired", {true}});
    if (record.away) object.push_back({"away", {true}});
    return object;
}

std::unique_ptr<RecordWriter> NewRecordWriter(RecordFormat format, bool several,
                                              const std::vector<std::string>& names) {
    std::unique_ptr<RecordWriter> writer = NewWriter(format, several, names);
    if (names.empty()) return writer;
    return std::make_unique<SelectedRecordWriter>(std::move(writer), names);
}

}  // namespace ZEMA

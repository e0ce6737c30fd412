#include "host/index/IndexTables.h"

#include <array>
#include <iterator>
#include <utility>

#include "host/print/JsonReader.h"
#include "host/print/JsonWriter.h"
#include "host/search/Fold.h"
#include "host/system/Paths.h"
#include "host/system/Utf8Text.h"

namespace ZEMA {

namespace {

// The step from each version to the next. A step that has been in use is not changed any more.
//
// Words are folded before they come into the table, and have none but letters, digits and marks; so the tokenizer,
// which is SQLite's own, has nothing to do but to find them again.
constexpr std::array<const char*, kSchemaVersion> kSteps = {R"sql(
CREATE TABLE roots(
    path BLOB PRIMARY KEY
) WITHOUT ROWID;

CREATE TABLE folders(
    id INTEGER PRIMARY KEY,
    path BLOB NOT NULL,
    filesystem TEXT NOT NULL,
    place BLOB NOT NULL,
    UNIQUE(path, filesystem, place)
);

CREATE TABLE documents(
    id INTEGER PRIMARY KEY,
    path BLOB NOT NULL UNIQUE,
    folder INTEGER NOT NULL,
    size INTEGER NOT NULL,
    modified INTEGER NOT NULL,
    changed INTEGER NOT NULL,
    number INTEGER NOT NULL,
    settled INTEGER NOT NULL,
    away INTEGER NOT NULL DEFAULT 0,
    repaired INTEGER NOT NULL,
    error TEXT,
    passing INTEGER NOT NULL,
    program TEXT NOT NULL,
    imported INTEGER NOT NULL,
    version TEXT,
    creator TEXT,
    descriptions TEXT,
    authors TEXT,
    keywords TEXT,
    bricks INTEGER,
    designs TEXT,
    others TEXT
);
CREATE INDEX documents_by_folder ON documents(folder);
CREATE INDEX documents_by_bricks ON documents(bricks);
CREATE INDEX documents_failed ON documents(error) WHERE error IS NOT NULL;
CREATE INDEX documents_away ON documents(id) WHERE away;
CREATE INDEX documents_repaired ON documents(id) WHERE repaired;

CREATE TABLE languages(
    language TEXT NOT NULL COLLATE NOCASE,
    document INTEGER NOT NULL,
    PRIMARY KEY(language, document)
) WITHOUT ROWID;
CREATE INDEX languages_by_document ON languages(document);

CREATE VIRTUAL TABLE words USING fts5(
    authors, creator, keywords, descriptions, designs, name,
    tokenize = "unicode61 remove_diacritics 0 categories 'L* M* N* Co'"
);
)sql"};

// What a column keeps of an attribute: the text, the number, or a list or dictionary as JSON.
enum class Form { Text, Number, Json };

// The columns for the known attributes, in the order of their table. An attribute of another form than its column's is
// one of the others.
struct AttributeColumn {
    std::string_view attribute;
    Form form;
};
constexpr std::array<AttributeColumn, 7> kColumns = {{
    {"kMDItemVersion", Form::Text},
    {"kMDItemCreator", Form::Text},
    {"kMDItemDescription", Form::Json},
    {"kMDItemAuthors", Form::Json},
    {"kMDItemKeywords", Form::Json},
    {"com_zema_wqf_numberofbricks", Form::Number},
    {"com_zema_wqf_listofbricks", Form::Json},
}};

bool Fits(const Value& value, Form form) {
    if (form == Form::Text) return value.AsText() != nullptr;
    if (form == Form::Number) return std::holds_alternative<std::int64_t>(value.content);
    return value.AsList() != nullptr || value.AsDictionary() != nullptr;
}

void BindAttributes(const Value::Dictionary& attributes, Statement& statement) {
    Value::Dictionary others = attributes;
    for (const AttributeColumn& column : kColumns) {
        const Value* const value = Find(attributes, column.attribute);
        if (value == nullptr || !Fits(*value, column.form)) {
            statement.BindNext(nullptr);
            continue;
        }
        if (column.form == Form::Text) statement.BindNext(std::string_view(*value->AsText()));
        if (column.form == Form::Number) statement.BindNext(std::get<std::int64_t>(value->content));
        if (column.form == Form::Json) statement.BindNext(std::string_view(JsonText(*value)));
        std::erase_if(others, [&](const Value::Item& item) { return item.key == column.attribute; });
    }
    if (others.empty()) {
        statement.BindNext(nullptr);
    } else {
        statement.BindNext(std::string_view(JsonText({others})));
    }
}

// Stands between two texts of a column, so that no phrase reaches from one into the other: a character for private use
// is a word to the tokenizer, and none to FoldedWords.
constexpr std::string_view kBetweenTexts = " \xEE\x80\x80 ";  // U+E000

void AppendTexts(const Value& value, std::string& texts) {
    if (const std::string* const text = value.AsText()) {
        texts.append(texts.empty() ? "" : kBetweenTexts).append(FoldedText(*text));
    } else if (const Value::List* const list = value.AsList()) {
        for (const Value& item : *list) AppendTexts(item, texts);
    } else if (const Value::Dictionary* const dictionary = value.AsDictionary()) {
        for (const Value::Item& item : *dictionary) AppendTexts(item.value, texts);
    }
}

std::string TextsOf(const Value::Dictionary& attributes, std::string_view name) {
    std::string texts;
    if (const Value* const value = Find(attributes, name)) AppendTexts(*value, texts);
    return texts;
}

}  // namespace

void CreateTables(Database& database, std::int64_t version) {
    for (auto step = static_cast<std::size_t>(version); step < kSteps.size(); ++step) database.Run(kSteps[step]);
    database.Run(("PRAGMA user_version = " + std::to_string(kSchemaVersion)).c_str());
}

DocumentTables::DocumentTables(Database& database, std::string program)
    : program_(std::move(program)),
      find_(database.Prepare("SELECT id, imported FROM documents WHERE path = ?")),
      insert_(database.Prepare("INSERT INTO documents(folder, size, modified, changed, number, settled, repaired, "
                               "error, passing, program, imported, version, creator, descriptions, authors, "
                               "keywords, bricks, designs, others, path) "
                               "VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?) RETURNING id")),
      update_(database.Prepare("UPDATE documents SET folder = ?, size = ?, modified = ?, changed = ?, number = ?, "
                               "settled = ?, repaired = ?, error = ?, passing = ?, program = ?, imported = ?, "
                               "version = ?, creator = ?, descriptions = ?, authors = ?, keywords = ?, bricks = ?, "
                               "designs = ?, others = ?, away = 0 WHERE id = ?")),
      noteFailure_(database.Prepare("UPDATE documents SET folder = ?, error = ?, passing = 1, program = ?, away = 0 "
                                    "WHERE id = ?")),
      removeWords_(database.Prepare("DELETE FROM words WHERE rowid = ?")),
      insertWords_(database.Prepare("INSERT INTO words(rowid, authors, creator, keywords, descriptions, designs, name) "
                                    "VALUES(?, ?, ?, ?, ?, ?, ?)")),
      removeLanguages_(database.Prepare("DELETE FROM languages WHERE document = ?")),
      insertLanguage_(database.Prepare("INSERT OR IGNORE INTO languages(language, document) VALUES(?, ?)")),
      removeDocument_(database.Prepare("DELETE FROM documents WHERE id = ?")) {}

void DocumentTables::Put(const DocumentRecord& record, const FileStamp& stamp, bool isSettled, std::int64_t folder) {
    const bool isKnown = find_.Bind(Bytes{record.path}).Step();
    std::int64_t document = isKnown ? find_.Number(0) : 0;
    const std::string error = ReplaceInvalidUtf8(record.error);
    if (isKnown && record.passing) {
        find_.Reset();
        return noteFailure_.Bind(folder, std::string_view(error), std::string_view(program_), document).Run();
    }
    find_.Reset();

    Statement& write = isKnown ? update_ : insert_;
    write.Bind(folder, stamp.size, stamp.modified, stamp.changed, stamp.number, std::int64_t{isSettled},
               std::int64_t{record.repaired});
    if (record.imported) {
        write.BindNext(nullptr);
    } else {
        write.BindNext(std::string_view(error));
    }
    write.BindNext(std::int64_t{record.passing});
    write.BindNext(std::string_view(program_));
    write.BindNext(std::int64_t{record.imported});
    BindAttributes(record.attributes, write);
    if (isKnown) {
        write.BindNext(document);
    } else {
        write.BindNext(Bytes{record.path});
    }
    if (write.Step()) document = write.Number(0);
    write.Reset();
    if (isKnown) {
        removeWords_.Bind(document).Run();
        removeLanguages_.Bind(document).Run();
    }
    PutWords(document, record);
}

void DocumentTables::PutWords(std::int64_t document, const DocumentRecord& record) {
    const auto texts = [&](std::string_view name) { return TextsOf(record.attributes, name); };
    insertWords_
        .Bind(document, std::string_view(texts("kMDItemAuthors")), std::string_view(texts("kMDItemCreator")),
              std::string_view(texts("kMDItemKeywords")), std::string_view(texts("kMDItemDescription")),
              std::string_view(texts("com_zema_wqf_listofbricks")),
              std::string_view(FoldedText(ReplaceInvalidUtf8(NameOf(record.path)))))
        .Run();
    const Value* const descriptions = Find(record.attributes, "kMDItemDescription");
    if (descriptions == nullptr || descriptions->AsDictionary() == nullptr) return;
    for (const Value::Item& item : *descriptions->AsDictionary()) {
        insertLanguage_.Bind(std::string_view(item.key), document).Run();
    }
}

DocumentRecord RecordOf(const Statement& row) {
    DocumentRecord record;
    record.path = row.Text(0);
    record.imported = row.Number(1) != 0;
    record.error = row.Text(2);
    record.passing = row.Number(3) != 0;
    record.repaired = row.Number(4) != 0;
    record.away = row.Number(5) != 0;
    int number = 6;
    for (const AttributeColumn& column : kColumns) {
        const int place = number++;
        if (row.IsNull(place)) continue;
        Value value{std::string(row.Text(place))};
        if (column.form == Form::Number) value = {row.Number(place)};
        if (column.form == Form::Json) value = ReadJson(row.Text(place)).value_or(Value());
        record.attributes.push_back({std::string(column.attribute), std::move(value)});
    }
    std::optional<Value> others = ReadJson(row.Text(number));
    auto* const rest = others ? std::get_if<Value::Dictionary>(&others->content) : nullptr;
    if (rest != nullptr) std::move(rest->begin(), rest->end(), std::back_inserter(record.attributes));
    return record;
}

void DocumentTables::Remove(std::int64_t document) {
    removeWords_.Bind(document).Run();
    removeLanguages_.Bind(document).Run();
    removeDocument_.Bind(document).Run();
}

}  // namespace ZEMA

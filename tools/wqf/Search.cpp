// wqf search: the documents in the index that a query finds.

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/index/IndexFile.h"
#include "host/search/Fold.h"
#include "host/search/Matches.h"
#include "host/system/Output.h"
#include "host/system/Utf8Text.h"
#include "tools/wqf/ExitStatus.h"
#include "tools/wqf/IndexCommands.h"
#include "tools/wqf/QueryText.h"

namespace ZEMA {

namespace {

// How many hits are printed for people who do not say how many they want.
constexpr std::size_t kHitsForPeople = 50;

// How much of a description is shown in front of the first match, and of all, in bytes.
constexpr std::size_t kBeforeMatch = 30;
constexpr std::size_t kSnippetSize = 100;

// Puts hits into words for people.
class HitText {
public:
    HitText(const Query& query, bool hasColours) : matches_(query), hasColours_(hasColours) {}

    std::string Of(const DocumentRecord& record) const {
        std::string text = Coloured("1", Safe(record.path));
        if (record.away) text += " (away)";
        if (record.repaired) text += " (repaired)";
        text += "\n";
        const std::string summary = SummaryOf(record.attributes);
        if (!summary.empty()) text += "    " + summary + "\n";
        if (!record.error.empty()) text += "    not imported: " + Safe(record.error) + "\n";
        return text + SnippetOf(record.attributes);
    }

private:
    static std::string Safe(std::string_view text) { return EscapeControls(ReplaceInvalidUtf8(text)); }

    std::string Coloured(const char* colour, const std::string& text) const {
        return hasColours_ ? std::string("\033[") + colour + "m" + text + "\033[0m" : text;
    }

    // The text from `start` to `end` with what matches set off.
    std::string Marked(std::string_view text, const std::vector<TextRange>& ranges, std::size_t start,
                       std::size_t end) const {
        std::string marked;
        for (const TextRange& range : ranges) {
            if (range.first < start || range.second > end) continue;
            marked += Safe(text.substr(start, range.first - start));
            marked += Coloured("1;31", Safe(text.substr(range.first, range.second - range.first)));
            start = range.second;
        }
        return marked + Safe(text.substr(start, end - start));
    }

    std::string Marked(TextField field, std::string_view text) const {
        return Marked(text, matches_.In(field, text), 0, text.size());
    }

    // Authors, keywords, creating program and bricks on one line.
    std::string SummaryOf(const Value::Dictionary& attributes) const {
        std::string summary;
        const auto add = [&](const std::string& part) {
            if (!part.empty()) summary += (summary.empty() ? "" : "; ") + part;
        };
        add(ListOf(TextField::Authors, Find(attributes, "kMDItemAuthors")));
        add(ListOf(TextField::Keywords, Find(attributes, "kMDItemKeywords")));
        const Value* const creator = Find(attributes, "kMDItemCreator");
        if (creator != nullptr && creator->AsText() != nullptr) add(Marked(TextField::Creator, *creator->AsText()));
        const Value* const bricks = Find(attributes, "com_zema_wqf_numberofbricks");
        const auto* const count = bricks == nullptr ? nullptr : std::get_if<std::int64_t>(&bricks->content);
        if (count != nullptr) add(std::to_string(*count) + (*count == 1 ? " brick" : " bricks"));
        return summary;
    }

    std::string ListOf(TextField field, const Value* value) const {
        std::string texts;
        if (value == nullptr || value->AsList() == nullptr) return texts;
        for (const Value& item : *value->AsList()) {
            if (item.AsText() != nullptr) texts += (texts.empty() ? "" : ", ") + Marked(field, *item.AsText());
        }
        return texts;
    }

    // The description that matches, or the designs that do.
    std::string SnippetOf(const Value::Dictionary& attributes) const {
        const Value* const descriptions = Find(attributes, "kMDItemDescription");
        if (descriptions != nullptr && descriptions->AsDictionary() != nullptr) {
            for (const auto& [language, value] : *descriptions->AsDictionary()) {
                if (value.AsText() == nullptr) continue;
                const std::string snippet = PartOf(*value.AsText());
                if (!snippet.empty()) return "    " + Safe(language) + ": " + snippet + "\n";
            }
        }
        std::string designs;
        const Value* const list = Find(attributes, "com_zema_wqf_listofbricks");
        if (list != nullptr && list->AsList() != nullptr) {
            for (const Value& design : *list->AsList()) {
                if (design.AsText() == nullptr || matches_.In(TextField::Designs, *design.AsText()).empty()) continue;
                designs += (designs.empty() ? "    brick " : ", ") + Marked(TextField::Designs, *design.AsText());
            }
        }
        return designs.empty() ? designs : designs + "\n";
    }

    // What stands around the first match; nothing where there is none. Words are not cut.
    std::string PartOf(const std::string& text) const {
        const std::vector<TextRange> ranges = matches_.In(TextField::Descriptions, text);
        if (ranges.empty()) return {};
        std::size_t start = 0;
        std::size_t end = text.size();
        for (const FoldedWord& word : FoldedWords(text)) {
            if (word.begin + kBeforeMatch <= ranges.front().first) start = word.begin;
            if (word.end <= std::max(start + kSnippetSize, ranges.front().second)) end = word.end;
        }
        if (start < kBeforeMatch) start = 0;
        if (end + kBeforeMatch > text.size()) end = text.size();
        return (start == 0 ? "" : "… ") + Marked(text, ranges, start, end) + (end == text.size() ? "" : " …");
    }

    Matches matches_;
    bool hasColours_;
};

bool WantsColours() {
    const char* const noColour = std::getenv("NO_COLOR");  // by its convention any text but the empty one
    return (noColour == nullptr || noColour[0] == '\0') && isatty(STDOUT_FILENO) == 1;
}

void PrintText(Hits& hits, std::size_t count, const Query& query, Output& output) {
    const HitText text(query, WantsColours());
    for (std::size_t i = 0; i < count && !output.Failed(); ++i) output.Write(text.Of(hits.Record(i)));
    if (count < hits.Count())
        PrintMessage("these are " + std::to_string(count) + " of " + std::to_string(hits.Count()) +
                     "; --limit shows more");
}

void PrintRecords(Hits& hits, std::size_t count, RecordWriter& writer, Output& output) {
    output.Write(writer.Head());
    for (std::size_t i = 0; i < count && !output.Failed(); ++i) output.Write(writer.Record(hits.Record(i)));
    output.Write(writer.Tail());
}

// Many short lines are written together.
void PrintPaths(Hits& hits, std::size_t count, char end, Output& output) {
    constexpr std::size_t kPieceSize = 1 << 16;
    std::string paths;
    for (std::size_t i = 0; i < count && !output.Failed(); ++i) {
        paths.append(hits.Path(i)) += end;
        if (paths.size() < kPieceSize) continue;
        output.Write(paths);
        paths.clear();
    }
    output.Write(paths);
}

int PrintHits(Hits& hits, const Query& query, const SearchOptions& options) {
    Output output;
    const bool isForPeople = options.format == RecordFormat::Text;
    const std::size_t count =
        std::min(hits.Count(), options.limit.value_or(isForPeople ? kHitsForPeople : hits.Count()));
    if (options.count) {
        output.Write(std::to_string(hits.Count()) + "\n");
    } else if (isForPeople) {
        PrintText(hits, count, query, output);
    } else if (options.format == RecordFormat::Paths) {
        PrintPaths(hits, count, '\n', output);
    } else if (options.format == RecordFormat::PathsWithZeroBytes) {
        PrintPaths(hits, count, '\0', output);
    } else {
        PrintRecords(hits, count, *NewRecordWriter(options.format, true), output);
    }
    if (output.Failed()) return ExitStatusOf(output);
    return hits.Count() == 0 ? kExitSomeFailed : kExitDone;
}

}  // namespace

int RunSearch(const SearchOptions& options) {
    const std::optional<Query> query = ReadQuery(options.query);
    if (!query) return kExitWrongUse;
    const Result<std::string> index = options.index.empty() ? DefaultIndexPath() : options.index;
    const Result<std::unique_ptr<Database>> database = index ? OpenIndexForReading(*index) : index.Why();
    if (!database) {
        const bool isMissing = database.Why().kind == FailureKind::Missing;
        PrintMessage(index ? *index : "the index",
                     database.Why().text + (isMissing ? "; 'wqf index FOLDER' makes an index" : ""));
        return kExitWrongUse;
    }
    int status = kExitDone;
    {
        Hits hits(**database, *query, options.count ? HitOrder::Any : options.order);
        status = PrintHits(hits, *query, options);
    }
    if (!(*database)->Failed()) return status;
    PrintMessage(*index, (*database)->Why().text);
    return kExitWrongUse;
}

}  // namespace ZEMA

#include "host/handlers/RecollHandler.h"

#include <charconv>
#include <cstddef>
#include <optional>
#include <system_error>

namespace ZEMA {

namespace {

constexpr std::size_t kLongestValue = std::size_t{1} << 20;  // bytes; a path has 4,095 at most

Failure Malformed(const std::string& what) {
    return {FailureKind::Damaged, "the indexer's question is malformed: " + what};
}

std::string LowerCase(std::string text) {
    for (char& unit : text) unit = unit >= 'A' && unit <= 'Z' ? static_cast<char>(unit - 'A' + 'a') : unit;
    return text;
}

// The number of bytes that a line `Name: COUNT` announces.
std::optional<std::size_t> CountIn(std::string_view line) {
    const std::size_t colon = line.find(": ");
    if (colon == std::string_view::npos) return std::nullopt;
    const std::string_view digits = line.substr(colon + 2);
    std::size_t count = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), count);
    if (error != std::errc() || end != digits.data() + digits.size() || count > kLongestValue) return std::nullopt;
    return count;
}

// The path that the next question is about; null at the end of the input. What else a question holds is passed over.
Result<std::optional<std::string>> ReadQuestion(std::istream& input) {
    std::optional<std::string> path;
    for (std::string line; std::getline(input, line);) {
        if (line.empty()) return path ? path : std::string();
        const std::optional<std::size_t> count = CountIn(line);
        if (!count) return Malformed("'" + line + "'");
        std::string value(*count, '\0');
        if (!input.read(value.data(), static_cast<std::streamsize>(*count))) return Malformed("it ends early");
        if (LowerCase(line.substr(0, line.find(':'))) == "filename") path = value;
    }
    if (path) return Malformed("it ends early");
    return path;
}

void AppendMarkup(std::string_view text, std::string& page) {
    for (const char unit : text) {
        switch (unit) {
            case '&':
                page += "&amp;";
                break;
            case '<':
                page += "&lt;";
                break;
            case '>':
                page += "&gt;";
                break;
            case '"':
                page += "&quot;";
                break;
            default:
                page += unit;
        }
    }
}

void AppendField(std::string_view name, std::string_view value, std::string& page) {
    page.append("<meta name=\"").append(name).append("\" content=\"");
    AppendMarkup(value, page);
    page += "\">\n";
}

void AppendFields(std::string_view name, const std::vector<std::string>& values, std::string& page) {
    for (const std::string& value : values) AppendField(name, value, page);
}

}  // namespace

std::string RecollPageOf(const DocumentTexts& texts) {
    std::string page = "<html><head>\n<meta http-equiv=\"Content-Type\" content=\"text/html; charset=utf-8\">\n<title>";
    AppendMarkup(texts.title, page);
    page += "</title>\n";
    AppendFields("author", texts.authors, page);
    AppendFields("keywords", texts.keywords, page);
    if (!texts.creator.empty()) AppendField("wqfcreator", texts.creator, page);
    AppendField("wqfversion", texts.version, page);
    AppendField("wqfbricks", std::to_string(texts.brickCount), page);
    AppendFields("wqfdesign", texts.designs, page);
    page += "</head><body><pre>\n";
    for (const std::string& description : texts.descriptions) {
        AppendMarkup(description, page);
        page += '\n';
    }
    return page + "</pre></body></html>\n";
}

Failure ServeRecoll(std::istream& input, const std::function<bool(std::string_view answer)>& write,
                    const ReadDocument& read) {
    for (;;) {
        const Result<std::optional<std::string>> path = ReadQuestion(input);
        if (!path) return path.Why();
        if (!*path) return {};
        const DocumentRecord record = read(**path);
        std::string answer = "Fileerror: 0\n\n";
        if (record.imported) {
            const std::string page = RecollPageOf(TextsOf(record));
            answer = "Document: " + std::to_string(page.size()) + "\n" + page + "Eofnext: 0\n\n";
        }
        if (!write(answer)) return {};
    }
}

}  // namespace ZEMA

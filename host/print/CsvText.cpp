#include "host/print/CsvText.h"

#include <charconv>
#include <string_view>

namespace ZEMA {

namespace {

constexpr std::string_view kFormulaStarts = "=+-@\t\r";

std::string Quoted(const std::string& cell) {
    if (cell.find_first_of("\",\r\n") == std::string::npos) return cell;
    std::string quoted = "\"";
    for (const char unit : cell) quoted.append(unit == '"' ? 2 : 1, unit);
    return quoted + "\"";
}

// Puts one kind of value into words.
struct CellMaker {
    std::string operator()(const std::string& text) const { return text; }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(bool value) const { return value ? "true" : "false"; }
    std::string operator()(double number) const {
        char digits[32];
        return std::string(digits, std::to_chars(std::begin(digits), std::end(digits), number).ptr);
    }
    std::string operator()(const Value::List& values) const {
        std::string text;
        for (const Value& value : values) text.append(text.empty() ? "" : "; ") += std::visit(*this, value.content);
        return text;
    }
    std::string operator()(const Value::Dictionary& values) const {
        std::string text;
        for (const auto& [key, value] : values)
            text.append(text.empty() ? "" : "; ").append(key).append(": ") += std::visit(*this, value.content);
        return text;
    }
};

}  // namespace

std::string CsvLine(const std::vector<std::string>& cells) {
    std::string line;
    for (const std::string& cell : cells) line.append(&cell == &cells.front() ? "" : ",").append(Quoted(cell));
    return line + "\r\n";
}

std::string CsvCell(const Value& value) {
    std::string cell = std::visit(CellMaker(), value.content);
    const bool isNumber =
        std::holds_alternative<std::int64_t>(value.content) || std::holds_alternative<double>(value.content);
    if (!isNumber && !cell.empty() && kFormulaStarts.find(cell.front()) != std::string_view::npos)
        cell.insert(0, 1, '\'');
    return cell;
}

}  // namespace ZEMA

#include "tools/wqf/QueryText.h"

#include <utility>

#include "host/search/Fold.h"
#include "host/system/Output.h"
#include "host/system/Utf8Text.h"

namespace ZEMA {

std::optional<Query> ReadQuery(const std::string& text) {
    ParsedQuery parsed = ParseQuery(text);
    for (const std::string& hint : parsed.hints) PrintMessage(hint);
    if (parsed.query) return std::move(parsed.query);
    const std::string before = EscapeControls(ReplaceInvalidUtf8(text.substr(0, parsed.place)));
    PrintMessage(parsed.expected);
    PrintMessage("  " + text);
    PrintMessage("  " + std::string(ColumnsOf(before), ' ') + "^");
    return std::nullopt;
}

}  // namespace ZEMA

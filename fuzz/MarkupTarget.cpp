// The document model: any text is parsed or refused, and what was parsed can be written and read again.
#include <utility>
#include <vector>

#include "fuzz/Fuzzing.h"
#include "xml/TextPieces.h"
#include "xml/XMLDOMNodeAString.h"

namespace ZEMA {

namespace {

using Node = XMLDOMNodeAString;
using fuzzing::Require;

void AppendEscaped(std::string_view bytes, std::string& markup) {
    for (const char byte : bytes) {
        const bool plain = byte != '<' && byte != '&' && byte != '"' && byte != '>' && (byte & 0xE0) != 0;
        if (plain || (byte & 0x80) != 0) {
            markup += byte;
        } else {
            markup.append("&#").append(std::to_string(byte)).append(";");
        }
    }
}

// Without recursion, since a document nests as deep as it likes. Children follow the text, which is one piece then.
std::string MarkupOf(const Node& root) {
    std::string markup;
    std::vector<std::pair<const Node*, std::size_t>> open;
    const auto start = [&](const Node& node) {
        markup.append("<").append(node.name.View());
        for (const auto& [name, value] : node.attributes) {
            markup.append(" ").append(name.View()).append("=\"");
            AppendEscaped(value.View(), markup);
            markup += '"';
        }
        markup += '>';
        AppendEscaped(node.GetText().View(), markup);
        open.emplace_back(&node, 0);
    };
    start(root);
    while (!open.empty()) {
        const Node& node = *open.back().first;
        if (open.back().second < node.children.Size()) {
            start(*node.children[open.back().second++]);
        } else {
            markup.append("</").append(node.name.View()).append(">");
            open.pop_back();
        }
    }
    return markup;
}

void ExamineNode(const Node& node) {
    Require(!node.name.IsEmpty(), "an element has a name");
    for (const auto& [name, value] : node.attributes) {
        AString found;
        Require(node.GetAttribute(name, found) && found == value, "an attribute is found by its name");
    }
    for (const AString& line : node.textLines) {
        Require(!line.IsEmpty() && Trimmed(line.View()) == line.View(), "lines are trimmed, and none is empty");
    }
    String text;
    node.GetText(text);
    // A byte-order mark in front is not taken as text.
    const bool marked = !node.textLines.Empty() && node.textLines[0].View().starts_with("\xEF\xBB\xBF");
    Require(marked || text.IsEmpty() == node.textLines.Empty(), "the parser gives UTF-8");
    for (const auto& child : node.children) {
        Require(node.FindChild(child->name) != nullptr, "a child is found by its name");
    }
}

void ExamineTree(const Node& root) {
    std::vector<const Node*> nodes{&root};
    while (!nodes.empty()) {
        const Node& node = *nodes.back();
        nodes.pop_back();
        ExamineNode(node);
        for (const auto& child : node.children) nodes.push_back(child.Get());
    }
}

void ExaminePieces(std::string_view text) {
    BasicArray<AString> pieces;
    Split(AString(text.data(), static_cast<std::uint32_t>(text.size())), '<', pieces);
    std::string joined;
    for (const AString& piece : pieces) joined.append(piece.View()).append("<");
    if (!text.ends_with('<') && !joined.empty()) joined.pop_back();
    Require(joined == text, "pieces and delimiters are the text");
}

}  // namespace

}  // namespace ZEMA

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ZEMA;
    const std::string_view text = fuzzing::TextOf(data, size);
    ExaminePieces(text);
    const auto document = New<XMLDOMAString>();
    if (!document->Parse(AString(text.data(), static_cast<std::uint32_t>(size)), nullptr)) {
        Require(document->name.IsEmpty() && document->children.Empty(), "a text that is refused leaves nothing");
        return 0;
    }
    ExamineTree(*document);
    const std::string markup = MarkupOf(*document);
    const auto again = New<XMLDOMAString>();
    const bool parsed = again->Parse(AString(markup.data(), static_cast<std::uint32_t>(markup.size())), nullptr);
    // A few characters are letters of names to the parser where a document is in ISO-8859-1, and not in UTF-8.
    Require(parsed || text.find("encoding") != text.npos, "what was parsed can be written");
    Require(!parsed || MarkupOf(*again) == markup, "what was written is read again");
    return 0;
}

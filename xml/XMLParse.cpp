#include <expat.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <limits>
#include <memory>
#include <new>
#include <string_view>
#include <type_traits>

#include "core/BasicDeque.h"
#include "core/BasicMap.h"
#include "core/ByteText.h"
#include "xml/SharedTexts.h"
#include "xml/XMLDOMNodeAString.h"
#include "xml/XMLDOMNodeAStringTester.h"

namespace ZEMA {

namespace {

using Node = XMLDOMNodeAString;

std::string_view TrimmedLine(std::string_view line) {
    while (!line.empty() && IsWhiteSpace(line.front())) line.remove_prefix(1);
    while (!line.empty() && IsWhiteSpace(line.back())) line.remove_suffix(1);
    return line;
}

// Puts the lines of `text` that are not blank into `lines`, trimmed. A text that is one such line is not copied.
void SplitLines(const AString& text, BasicArray<AString>& lines) {
    lines.Clear();
    for (std::string_view rest = text.View(); !rest.empty();) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        const std::string_view line = TrimmedLine(rest.substr(0, end));
        if (line.size() == text.Length()) {
            lines.PushBack(text);
        } else if (!line.empty()) {
            lines.PushBack(AString(line.data(), static_cast<std::uint32_t>(line.size())));
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
}

// What one parse knows. The parser's handlers are C functions: what one of them throws is kept, the parser stopped, and
// the exception goes on when the parser has been left. The parser may still call handlers after it was stopped.
class ParseContext {
public:
    ParseContext(Node* documentNode, XMLDOMNodeAStringTester* rootTester) : root(documentNode), tester(rootTester) {}

    bool Parse(const AString& text);

private:
    struct ParserDeleter {
        void operator()(XML_Parser target) const { XML_ParserFree(target); }
    };
    using ParserOwner = std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserDeleter>;

    static void XMLCALL OnStart(void* context, const XML_Char* name, const XML_Char** attributes) {
        static_cast<ParseContext*>(context)->Guard([&](ParseContext& self) { self.Start(name, attributes); });
    }
    static void XMLCALL OnEnd(void* context, const XML_Char* name) {
        static_cast<ParseContext*>(context)->Guard([&](ParseContext& self) { self.End(name); });
    }
    static void XMLCALL OnCharacters(void* context, const XML_Char* bytes, int length) {
        static_cast<ParseContext*>(context)->Guard([&](ParseContext& self) {
            self.Characters({bytes, static_cast<std::size_t>(length)});
        });
    }

    template <class Handler>
    void Guard(Handler handler) noexcept {
        if (failure_) return;
        try {
            handler(*this);
        } catch (...) {
            failure_ = std::current_exception();
            Stop();
        }
    }

    void Stop() { XML_StopParser(parser.get(), XML_FALSE); }

    void Start(std::string_view name, const XML_Char** attributes);
    void End(std::string_view name);
    void Characters(std::string_view bytes);

    void SetAttributes(Node& node, const XML_Char** attributes);
    void MergeAttributes(Node& node, const XML_Char** attributes);

    RefPointer<Node> root;
    BasicDeque<Pair<RefPointer<Node>, AString>> elementStack;  // every open element and its text so far
    ParserOwner parser;
    RefPointer<XMLDOMNodeAStringTester> tester;  // may be null
    bool atRoot = true;                          // until the first start tag has been handled
    SharedTexts texts_;
    std::exception_ptr failure_;
};

bool ParseContext::Parse(const AString& text) {
    if (text.Length() > static_cast<std::uint32_t>(std::numeric_limits<int>::max())) return false;
    parser.reset(XML_ParserCreate(nullptr));
    if (!parser) throw std::bad_alloc();
    XML_SetUserData(parser.get(), this);
    XML_SetElementHandler(parser.get(), OnStart, OnEnd);
    XML_SetCharacterDataHandler(parser.get(), OnCharacters);
    const XML_Status status = XML_Parse(parser.get(), text.Data(), static_cast<int>(text.Length()), XML_TRUE);
    parser.reset();
    if (failure_) std::rethrow_exception(failure_);
    return status == XML_STATUS_OK;
}

void ParseContext::Start(std::string_view name, const XML_Char** attributes) {
    RefPointer<Node> node = root;
    if (!elementStack.Empty()) {
        node = New<Node>();
        elementStack.Back().first->children.PushBack(node);
    }
    node->name = texts_.Share(name);
    SetAttributes(*node, attributes);
    if (atRoot && tester && !tester->Test(*node)) Stop();
    atRoot = false;
    elementStack.PushBack({node, AString()});
}

// The parser has refused an element with an attribute twice, so only one that had attributes before needs a search.
void ParseContext::SetAttributes(Node& node, const XML_Char** attributes) {
    if (!node.attributes.Empty()) return MergeAttributes(node, attributes);
    std::size_t count = 0;
    while (attributes[count * 2] != nullptr) ++count;
    node.attributes.Reserve(count);
    for (const XML_Char** attribute = attributes; *attribute != nullptr; attribute += 2) {
        node.attributes.PushBack({texts_.Share(attribute[0]), texts_.Share(attribute[1])});
    }
}

// As SetAttribute for each, with one search tree for all of them.
void ParseContext::MergeAttributes(Node& node, const XML_Char** attributes) {
    BasicMap<AString, std::size_t> positions;
    for (std::size_t i = 0; i < node.attributes.Size(); ++i) positions.Insert(node.attributes[i].first, i);
    for (const XML_Char** attribute = attributes; *attribute != nullptr; attribute += 2) {
        const AString name = texts_.Share(attribute[0]);
        const AString value = texts_.Share(attribute[1]);
        const auto position = positions.Find(name);
        if (position != positions.end()) {
            node.attributes[position->second].second = value;
        } else {
            node.attributes.PushBack({name, value});
        }
    }
}

// White space in front of an element's text would be trimmed off in the end, and most elements have nothing else.
void ParseContext::Characters(std::string_view bytes) {
    AString& text = elementStack.Back().second;
    if (text.IsEmpty()) {
        while (!bytes.empty() && IsWhiteSpace(bytes.front())) bytes.remove_prefix(1);
    }
    text.Append(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

void ParseContext::End(std::string_view name) {
    const auto& [node, text] = elementStack.Back();
    if (!(node->name == name)) return Stop();
    SplitLines(text, node->textLines);
    elementStack.PopBack();
}

}  // namespace

bool XMLDOMNodeAString::Parse(const AString& text, XMLDOMNodeAStringTester* tester) {
    bool parsed = false;
    try {
        parsed = ParseContext(this, tester).Parse(text);
    } catch (...) {
        Empty();
        throw;
    }
    if (!parsed) Empty();
    return parsed;
}

}  // namespace ZEMA

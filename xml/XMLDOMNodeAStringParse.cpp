// The tree of elements that a text becomes.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

#include "core/BasicDeque.h"
#include "core/BasicMap.h"
#include "core/ByteText.h"
#include "core/MemoryBlocks.h"
#include "xml/TextPieces.h"
#include "xml/XMLDOMNodeAString.h"
#include "xml/XMLEventParser.h"

namespace ZEMA {

namespace {

using Node = XMLDOMNodeAString;

// Mixes the length and the first and last eight bytes, which tell names and numbers apart well enough.
std::size_t HashOf(std::string_view text) {
    std::uint64_t head = 0;
    std::uint64_t tail = 0;
    const std::size_t count = text.size() < sizeof head ? text.size() : sizeof head;
    std::memcpy(&head, text.data(), count);
    std::memcpy(&tail, text.data() + text.size() - count, count);
    const std::uint64_t mixed = (head ^ (tail << 7) ^ text.size()) * 0x9E3779B97F4A7C15U;
    return static_cast<std::size_t>(mixed >> 40);
}


// Remembers texts, so that one seen before is handed out as a share of its buffer instead of a new one. Names and most
// attribute values of a document are few and come thousands of times.
//
// The memory is bounded: each text has one slot, and a newer text takes the place of the one that has its slot. So
// handing out costs the same whatever the texts are.
class SharedTexts {
public:
    // New texts stand in `blocks`.
    explicit SharedTexts(MemoryBlocks& blocks) : blocks_(blocks) {}

    AString Share(std::string_view text);

private:
    // Longer texts rarely come twice, and would be kept for nothing.
    static constexpr std::size_t kLongest = 32;
    static constexpr std::size_t kSlotCount = 1024;

    AString CopyOf(std::string_view text) {
        return AString(text.data(), static_cast<std::uint32_t>(text.size()), &blocks_);
    }

    MemoryBlocks& blocks_;
    std::array<AString, kSlotCount> slots_;
};

AString SharedTexts::Share(std::string_view text) {
    if (text.empty() || text.size() > kLongest) return CopyOf(text);
    AString& slot = slots_[HashOf(text) % kSlotCount];
    if (slot.View() != text) slot = CopyOf(text);
    return slot;
}

// Puts the lines of `text` that are not blank into `lines`, trimmed. A text that is one such line is not copied.
void SplitLines(const AString& text, BasicArray<AString>& lines) {
    lines.Clear();
    ForEachPiece(text.View(), '\n', [&](std::string_view piece) {
        const std::string_view line = Trimmed(piece);
        if (line.size() == text.Length()) {
            lines.PushBack(text);
        } else if (!line.empty()) {
            lines.PushBack(AString(line.data(), static_cast<std::uint32_t>(line.size())));
        }
    });
}

// Builds the tree below one node while its document is being parsed.
class ParseContext : private XMLEventParser {
public:
    ParseContext(Node* documentNode, XMLDOMNodeAStringTester* rootTester) : root(documentNode), tester(rootTester) {}
    ~ParseContext() override = default;

    using XMLEventParser::Parse;

private:
    void StartElement(std::string_view name, const char** attributes) override;
    void EndElement(std::string_view name) override;
    void CharacterData(std::string_view bytes) override;

    void SetAttributes(Node& node, const char** attributes);
    void MergeAttributes(Node& node, const char** attributes);

    MemoryBlocks blocks_;  // of all nodes but the root, with their arrays and texts
    RefPointer<Node> root;
    BasicDeque<Pair<RefPointer<Node>, AString>> elementStack;  // every open element and its text so far
    RefPointer<XMLDOMNodeAStringTester> tester;                // may be null
    bool atRoot = true;                                        // until the first start tag has been handled
    SharedTexts texts_{blocks_};
};

void ParseContext::StartElement(std::string_view name, const char** attributes) {
    RefPointer<Node> node = root;
    if (!elementStack.Empty()) {
        node = NewIn<Node>(blocks_);
        elementStack.Back().first->children.PushBack(node, &blocks_);
    }
    node->name = texts_.Share(name);
    SetAttributes(*node, attributes);
    if (atRoot && tester && !tester->Test(*node)) Stop();
    atRoot = false;
    elementStack.PushBack({std::move(node), AString()});
}

// The parser has refused an element with an attribute twice, so only one that had attributes before needs a search.
void ParseContext::SetAttributes(Node& node, const char** attributes) {
    if (!node.attributes.Empty()) return MergeAttributes(node, attributes);
    std::size_t count = 0;
    while (attributes[count * 2] != nullptr) ++count;
    node.attributes.Reserve(count, &blocks_);
    for (const char** attribute = attributes; *attribute != nullptr; attribute += 2) {
        node.attributes.PushBack({texts_.Share(attribute[0]), texts_.Share(attribute[1])});
    }
}

// As SetAttribute for each, with one search tree for all of them.
void ParseContext::MergeAttributes(Node& node, const char** attributes) {
    BasicMap<AString, std::size_t> positions;
    for (std::size_t i = 0; i < node.attributes.Size(); ++i) positions.Insert(node.attributes[i].first, i);
    for (const char** attribute = attributes; *attribute != nullptr; attribute += 2) {
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
void ParseContext::CharacterData(std::string_view bytes) {
    AString& text = elementStack.Back().second;
    if (text.IsEmpty()) {
        while (!bytes.empty() && IsWhiteSpace(bytes.front())) bytes.remove_prefix(1);
    }
    text.Append(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

void ParseContext::EndElement(std::string_view name) {
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

// The tree of elements that a text becomes.
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

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

// Names of attributes. The parser hands out each from one place for as long as it lives, so the place tells which it
// is.
//
// The memory is bounded, as that of SharedTexts is.
class AttributeNames {
public:
    // The names stand in `blocks`.
    explicit AttributeNames(MemoryBlocks& blocks) : blocks_(blocks) {}

    const AString& Share(std::string_view name) {
        Slot& slot = slots_[reinterpret_cast<std::uintptr_t>(name.data()) / alignof(void*) % kSlotCount];
        if (slot.place != name.data())
            slot = {name.data(), AString(name.data(), static_cast<std::uint32_t>(name.size()), &blocks_)};
        return slot.name;
    }

private:
    static constexpr std::size_t kSlotCount = 64;

    struct Slot {
        const char* place = nullptr;
        AString name;
    };

    MemoryBlocks& blocks_;
    std::array<Slot, kSlotCount> slots_;
};

// The first and the last bytes of a text, which are all of it up to 16.
struct Ends {
    std::uint64_t first = 0;
    std::uint64_t last = 0;

    friend bool operator==(const Ends&, const Ends&) = default;
};

template <class Word>
Ends EndsOf(std::string_view text) {
    return {WordAt<Word>(text.data()), WordAt<Word>(text.data() + text.size() - sizeof(Word))};
}

Ends EndsOf(std::string_view text) {
    if (text.size() >= 8) return EndsOf<std::uint64_t>(text);
    if (text.size() >= 4) return EndsOf<std::uint32_t>(text);
    if (text.size() >= 2) return EndsOf<std::uint16_t>(text);
    return EndsOf<std::uint8_t>(text);
}

// Remembers texts, so that one seen before is handed out as a share of its buffer instead of a new one. Most attribute
// values of a document are few and come thousands of times.
//
// The memory is bounded: each text has one slot, and a newer text takes the place of the one that has its slot. So
// handing out costs the same whatever the texts are.
class SharedTexts {
public:
    // The texts stand in `blocks`. The number of slots is a power of two.
    SharedTexts(std::size_t slotCount, MemoryBlocks& blocks) : blocks_(blocks), slots_(slotCount) {}

    AString Share(std::string_view text) {
        if (text.empty() || text.size() > kLongest) return CopyOf(text);
        const Ends ends = EndsOf(text);
        const std::uint64_t mixed = (ends.first ^ (ends.last << 7) ^ text.size()) * 0x9E3779B97F4A7C15U;
        Slot& slot = slots_[(mixed >> 40) & (slots_.size() - 1)];
        const bool isSame = slot.ends == ends && slot.text.Length() == text.size() &&
                            (text.size() <= sizeof(Ends) || slot.text.View() == text);
        if (!isSame) slot = {ends, CopyOf(text)};
        return slot.text;
    }

private:
    // Longer texts rarely come twice, and would be kept for nothing.
    static constexpr std::size_t kLongest = 32;

    struct Slot {
        Ends ends;
        AString text;
    };

    AString CopyOf(std::string_view text) {
        return AString(text.data(), static_cast<std::uint32_t>(text.size()), &blocks_);
    }

    MemoryBlocks& blocks_;
    std::vector<Slot> slots_;
};

// How many values are remembered: of a small document fewer, as each slot is made and taken down once a document.
std::size_t ValueSlotsFor(std::uint32_t textLength) {
    return textLength < 64 * 1024 ? 128 : 1024;
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
    ParseContext(Node* documentNode, XMLDOMNodeAStringTester* rootTester, std::uint32_t textLength)
        : root(documentNode), tester(rootTester), values_(ValueSlotsFor(textLength), blocks_) {}
    ~ParseContext() override = default;

    using XMLEventParser::Parse;

private:
    void StartElement(std::string_view name, std::span<const XMLAttribute> attributes) override;
    void EndElement(std::string_view name) override;
    void CharacterData(std::string_view bytes) override;

    void SetAttributes(Node& node, std::span<const XMLAttribute> attributes);
    void MergeAttributes(Node& node, std::span<const XMLAttribute> attributes);

    MemoryBlocks blocks_;  // of all nodes but the root, with their arrays and texts
    RefPointer<Node> root;
    BasicDeque<Pair<RefPointer<Node>, AString>> elementStack;  // every open element and its text so far
    RefPointer<XMLDOMNodeAStringTester> tester;                // may be null
    bool atRoot = true;                                        // until the first start tag has been handled
    SharedTexts elementNames_{64, blocks_};
    AttributeNames attributeNames_{blocks_};
    SharedTexts values_;
};

void ParseContext::StartElement(std::string_view name, std::span<const XMLAttribute> attributes) {
    RefPointer<Node> node = root;
    if (!elementStack.Empty()) {
        node = NewIn<Node>(blocks_);
        elementStack.Back().first->children.PushBack(node, &blocks_);
    }
    node->name = elementNames_.Share(name);
    SetAttributes(*node, attributes);
    if (atRoot && tester && !tester->Test(*node)) Stop();
    atRoot = false;
    elementStack.PushBack({std::move(node), AString()});
}

// The parser has refused an element with an attribute twice, so only one that had attributes before needs a search.
void ParseContext::SetAttributes(Node& node, std::span<const XMLAttribute> attributes) {
    if (!node.attributes.Empty()) return MergeAttributes(node, attributes);
    node.attributes.Reserve(attributes.size(), &blocks_);
    for (const XMLAttribute& attribute : attributes) {
        node.attributes.PushBack({attributeNames_.Share(attribute.name), values_.Share(attribute.value)});
    }
}

// As SetAttribute for each, with one search tree for all of them.
void ParseContext::MergeAttributes(Node& node, std::span<const XMLAttribute> attributes) {
    BasicMap<AString, std::size_t> positions;
    for (std::size_t i = 0; i < node.attributes.Size(); ++i) positions.Insert(node.attributes[i].first, i);
    for (const XMLAttribute& attribute : attributes) {
        const AString name = attributeNames_.Share(attribute.name);
        const AString value = values_.Share(attribute.value);
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
    constexpr std::string_view kIndent = "        ";
    AString& text = elementStack.Back().second;
    if (text.IsEmpty()) {
        while (bytes.starts_with(kIndent)) bytes.remove_prefix(kIndent.size());
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

bool XMLDOMNodeAString::Parse(AString text, XMLDOMNodeAStringTester* tester) {
    bool parsed = false;
    try {
        parsed = ParseContext(this, tester, text.Length()).Parse(std::move(text));
    } catch (...) {
        Empty();
        throw;
    }
    if (!parsed) Empty();
    return parsed;
}

}  // namespace ZEMA

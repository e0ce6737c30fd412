#include "xml/XMLEventParser.h"

#include <expat.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

#include "core/Limits.h"

namespace ZEMA {

namespace {

// What a document writes beside the names and values of an element and an attribute at least: "</>" and " =''".
constexpr std::uint64_t kTagSize = 3;
constexpr std::uint64_t kAttributeSize = 4;

}  // namespace

// The functions that the parser calls. It may still call one after it has been stopped.
struct XMLEventParser::Callbacks {
    static void XMLCALL Start(void* self, const XML_Char* name, const XML_Char** attributes) {
        Guard(self, [&](XMLEventParser& events) { events.Start(name, attributes); });
    }

    static void XMLCALL End(void* self, const XML_Char* name) {
        Guard(self, [&](XMLEventParser& events) { events.EndElement(name); });
    }

    static void XMLCALL Characters(void* self, const XML_Char* bytes, int length) {
        const std::string_view text(bytes, static_cast<std::size_t>(length));
        Guard(self, [&](XMLEventParser& events) {
            events.Charge(text.size());
            events.CharacterData(text);
        });
    }

    // The text has references to characters resolved, but not those to other entities.
    static void XMLCALL Entity(void* self, const XML_Char*, int, const XML_Char* text, int length, const XML_Char*,
                               const XML_Char*, const XML_Char*, const XML_Char*) {
        if (text == nullptr || std::memchr(text, '&', static_cast<std::size_t>(length)) == nullptr) return;
        static_cast<XMLEventParser*>(self)->CountDeclaration();
    }

    static void XMLCALL Attribute(void* self, const XML_Char*, const XML_Char*, const XML_Char*, const XML_Char*, int) {
        static_cast<XMLEventParser*>(self)->CountDeclaration();
    }

    template <class Event>
    static void Guard(void* self, Event event) noexcept {
        auto& events = *static_cast<XMLEventParser*>(self);
        if (events.failure_) return;
        try {
            event(events);
        } catch (...) {
            events.failure_ = std::current_exception();
            events.Stop();
        }
    }
};

XMLEventParser::~XMLEventParser() = default;

bool XMLEventParser::Parse(AString text, MarkupFault* fault) {
    if (text.Length() > static_cast<std::uint32_t>(std::numeric_limits<int>::max())) return false;
    std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate(nullptr), XML_ParserFree);
    if (!parser) throw std::bad_alloc();
    parser_ = parser.get();
    XML_SetUserData(parser_, this);
    XML_SetElementHandler(parser_, Callbacks::Start, Callbacks::End);
    XML_SetEntityDeclHandler(parser_, Callbacks::Entity);
    XML_SetAttlistDeclHandler(parser_, Callbacks::Attribute);
    DeliverText(deliversText_);
    declarationCount_ = 0;
    isBeyondBounds_ = false;
    contentLeft_ = text.Length() * kContentRatio + kContentAllowance;
    // As XML_Parse does it, but with the text let go of in between.
    const int size = static_cast<int>(text.Length());
    void* const buffer = XML_GetBuffer(parser_, size);
    if (buffer != nullptr) std::memcpy(buffer, text.Data(), text.Length());
    text.Clear();
    const XML_Status status = buffer == nullptr ? XML_STATUS_ERROR : XML_ParseBuffer(parser_, size, XML_TRUE);
    if (status != XML_STATUS_OK && fault != nullptr) *fault = FaultHere();
    parser_ = nullptr;
    parser.reset();
    if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
    return status == XML_STATUS_OK;
}

void XMLEventParser::Start(std::string_view name, const char** entries) {
    std::uint64_t size = kTagSize + name.size();
    attributes_.clear();
    for (; *entries != nullptr; entries += 2) {
        const XMLAttribute& attribute = attributes_.emplace_back(XMLAttribute{entries[0], entries[1]});
        size += attribute.name.size() + attribute.value.size() + kAttributeSize;
    }
    Charge(size);
    StartElement(name, attributes_);
}

void XMLEventParser::CountDeclaration() {
    if (++declarationCount_ > kMostDeclarations) StopAtBound();
}

void XMLEventParser::Charge(std::uint64_t size) {
    if (size > contentLeft_) return StopAtBound();
    contentLeft_ -= size;
}

void XMLEventParser::StopAtBound() {
    isBeyondBounds_ = true;
    Stop();
}

// A text that was cut off is the most frequent fault, and the parser has several names for it.
MarkupFault XMLEventParser::FaultHere() const {
    const XML_Error code = XML_GetErrorCode(parser_);
    const char* text = XML_ErrorString(code);
    if (isBeyondBounds_) text = "its declarations stand for more than a document may come to";
    if (code == XML_ERROR_NO_ELEMENTS || code == XML_ERROR_UNCLOSED_TOKEN || code == XML_ERROR_PARTIAL_CHAR ||
        code == XML_ERROR_UNCLOSED_CDATA_SECTION) {
        text = "it ends too early";
    }
    return {XML_GetCurrentLineNumber(parser_), XML_GetCurrentColumnNumber(parser_) + 1, text == nullptr ? "" : text};
}

void XMLEventParser::Stop() {
    XML_StopParser(parser_, XML_FALSE);
}

void XMLEventParser::DeliverText(bool wanted) {
    deliversText_ = wanted;
    if (parser_ != nullptr) XML_SetCharacterDataHandler(parser_, wanted ? Callbacks::Characters : nullptr);
}

}  // namespace ZEMA

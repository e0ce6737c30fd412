#include "xml/XMLEventParser.h"

#include <expat.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace ZEMA {

namespace {

// Entities and attributes that a document may declare. Entities nested one in the other as often take a small part of
// any stack.
constexpr std::uint32_t kDeclarationLimit = 512;

// What an element and an attribute take at least, where a document writes them out: "<a/>" and " a=''".
constexpr std::uint64_t kTagSize = 4;
constexpr std::uint64_t kAttributeSize = 4;
constexpr std::uint64_t kStartTagAllowance = 65536;

}  // namespace

// The functions that the parser calls. It may still call one after it has been stopped.
struct XMLEventParser::Callbacks {
    static void XMLCALL Start(void* self, const XML_Char* name, const XML_Char** attributes) {
        Guard(self, [&](XMLEventParser& events) {
            events.ChargeStartTag(attributes);
            events.StartElement(name, attributes);
        });
    }

    static void XMLCALL End(void* self, const XML_Char* name) {
        Guard(self, [&](XMLEventParser& events) { events.EndElement(name); });
    }

    static void XMLCALL Characters(void* self, const XML_Char* bytes, int length) {
        Guard(self, [&](XMLEventParser& events) { events.CharacterData({bytes, static_cast<std::size_t>(length)}); });
    }

    static void XMLCALL Entity(void* self, const XML_Char*, int, const XML_Char*, int, const XML_Char*, const XML_Char*,
                               const XML_Char*, const XML_Char*) {
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

bool XMLEventParser::Parse(const AString& text) {
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
    startTagsLeft_ = std::uint64_t{text.Length()} * 2 + kStartTagAllowance;
    const XML_Status status = XML_Parse(parser_, text.Data(), static_cast<int>(text.Length()), XML_TRUE);
    parser_ = nullptr;
    parser.reset();
    if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
    return status == XML_STATUS_OK;
}

void XMLEventParser::CountDeclaration() {
    if (++declarationCount_ > kDeclarationLimit) Stop();
}

// Elements that the text itself writes out fit into its size once, so as much again is left to entities, for elements,
// and to declared attributes that an element leaves to their defaults.
void XMLEventParser::ChargeStartTag(const char** attributes) {
    std::uint64_t cost = kTagSize;
    for (const char** entry = attributes + XML_GetSpecifiedAttributeCount(parser_); *entry != nullptr; entry += 2) {
        cost += std::strlen(entry[0]) + std::strlen(entry[1]) + kAttributeSize;
    }
    if (cost > startTagsLeft_) return Stop();
    startTagsLeft_ -= cost;
}

void XMLEventParser::Stop() {
    XML_StopParser(parser_, XML_FALSE);
}

void XMLEventParser::DeliverText(bool wanted) {
    deliversText_ = wanted;
    if (parser_ != nullptr) XML_SetCharacterDataHandler(parser_, wanted ? Callbacks::Characters : nullptr);
}

}  // namespace ZEMA

#include "xml/XMLEventParser.h"

#include <expat.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace ZEMA {

// The functions that the parser calls. It may still call one after it has been stopped.
struct XMLEventParser::Callbacks {
    static void XMLCALL Start(void* self, const XML_Char* name, const XML_Char** attributes) {
        Guard(self, [&](XMLEventParser& events) { events.StartElement(name, attributes); });
    }

    static void XMLCALL End(void* self, const XML_Char* name) {
        Guard(self, [&](XMLEventParser& events) { events.EndElement(name); });
    }

    static void XMLCALL Characters(void* self, const XML_Char* bytes, int length) {
        Guard(self, [&](XMLEventParser& events) { events.CharacterData({bytes, static_cast<std::size_t>(length)}); });
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
    DeliverText(deliversText_);
    const XML_Status status = XML_Parse(parser_, text.Data(), static_cast<int>(text.Length()), XML_TRUE);
    parser_ = nullptr;
    parser.reset();
    if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
    return status == XML_STATUS_OK;
}

void XMLEventParser::Stop() {
    XML_StopParser(parser_, XML_FALSE);
}

void XMLEventParser::DeliverText(bool wanted) {
    deliversText_ = wanted;
    if (parser_ != nullptr) XML_SetCharacterDataHandler(parser_, wanted ? Callbacks::Characters : nullptr);
}

}  // namespace ZEMA

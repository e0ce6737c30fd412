// The XML parser as a sequence of events.
#pragma once

#include <exception>
#include <string_view>

#include "core/AString.h"

struct XML_ParserStruct;

namespace ZEMA {

// Parses one text and calls the operations of a subclass for what is in it. Texts are UTF-8 and gone when the operation
// returns.
//
// Errors:  what an operation throws stops the parse and comes out of Parse; nothing is thrown through the parser
// itself,
//          which is C.
// Threads: one at a time.
class XMLEventParser {
public:
    XMLEventParser() = default;
    XMLEventParser(const XMLEventParser&) = delete;
    XMLEventParser& operator=(const XMLEventParser&) = delete;

protected:
    virtual ~XMLEventParser();

    // Parses the whole text, whose own declaration decides about its encoding. False when it is malformed, when Stop
    // was called, or when it has 2^31 bytes or more.
    [[nodiscard]] bool Parse(const AString& text);

    // From an operation only. The parser may still close an element without content.
    void Stop();
    // Whether character data is wanted from here on, as it is at first.
    void DeliverText(bool wanted);

    // `attributes` alternates names and values, in document order, and ends with null; no name comes twice.
    virtual void StartElement(std::string_view name, const char** attributes) = 0;
    virtual void EndElement(std::string_view name) = 0;
    // A piece of character data, never empty; as small as one byte, where a document spells it out.
    virtual void CharacterData(std::string_view bytes) = 0;

private:
    struct Callbacks;

    XML_ParserStruct* parser_ = nullptr;  // while Parse runs
    bool deliversText_ = true;
    std::exception_ptr failure_;
};

}  // namespace ZEMA

// The XML parser as a sequence of events.
#pragma once

#include <cstdint>
#include <exception>
#include <span>
#include <string_view>
#include <vector>

#include "core/AString.h"

struct XML_ParserStruct;

namespace ZEMA {

// Where a text ceases to be well-formed, and what is wrong there, in words that go on behind a colon. The loaders never
// ask; it is for whoever explains a failure to people.
struct MarkupFault {
    std::uint64_t line = 0;    // counted from 1
    std::uint64_t column = 0;  // characters, from 1
    const char* text = "";     // lives as long as the program
};

// One attribute of a start tag; a zero byte stands behind either text. Within one parse, two names at the same address
// are the same name.
struct XMLAttribute {
    std::string_view name;
    std::string_view value;
};

// Parses one text and calls the operations of a subclass for what is in it. Texts are UTF-8 and gone when the operation
// returns.
//
// A document type may declare entities and attributes, within bounds: a few bytes of them could otherwise stand for any
// number of elements and values, or nest deeper than the stack, on which the parser opens one entity inside another.
//
// Errors:  what an operation throws stops the parse and comes out of Parse; nothing is thrown through the parser
//          itself, which is C. Memory that the parser cannot get for itself makes the text malformed.
// Threads: one at a time.
class XMLEventParser {
public:
    XMLEventParser() = default;
    XMLEventParser(const XMLEventParser&) = delete;
    XMLEventParser& operator=(const XMLEventParser&) = delete;

protected:
    virtual ~XMLEventParser();

    // Parses the whole text, whose own declaration decides about its encoding. False when it is malformed, when Stop
    // was called, when its declarations go beyond the bounds, or when it has 2^31 bytes or more. In the first and the
    // third case `fault`, unless null, receives what was wrong. A text that is moved in goes before the first operation
    // is called, since the parser has its own copy.
    [[nodiscard]] bool Parse(AString text, MarkupFault* fault = nullptr);

    // From an operation only. The parser may still close an element without content.
    void Stop();
    // Whether character data is wanted from here on, as it is at first.
    void DeliverText(bool wanted);

    // The attributes come in document order; no name comes twice.
    virtual void StartElement(std::string_view name, std::span<const XMLAttribute> attributes) = 0;
    virtual void EndElement(std::string_view name) = 0;
    // A piece of character data, never empty; as small as one byte, where a document spells it out.
    virtual void CharacterData(std::string_view bytes) = 0;

private:
    struct Callbacks;

    // `entries` alternates names and values and ends with null.
    void Start(std::string_view name, const char** entries);
    void CountDeclaration();
    // Stops the parse where the document comes to more than it may.
    void Charge(std::uint64_t size);
    void StopAtBound();
    MarkupFault FaultHere() const;

    XML_ParserStruct* parser_ = nullptr;  // while Parse runs
    std::uint32_t declarationCount_ = 0;
    std::uint64_t contentLeft_ = 0;  // bytes that start tags and text may still come to
    bool isBeyondBounds_ = false;
    bool deliversText_ = true;
    std::vector<XMLAttribute> attributes_;  // of the start tag that is being handled
    std::exception_ptr failure_;
};

}  // namespace ZEMA

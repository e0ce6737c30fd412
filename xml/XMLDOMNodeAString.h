// The document model over the XML parser: elements with attributes, children and text.
#pragma once

#include <string_view>

#include "core/AString.h"
#include "core/BasicArray.h"
#include "core/Object.h"
#include "core/Pair.h"
#include "core/RefPointer.h"
#include "core/String.h"

namespace ZEMA {

class XMLDOMNodeAStringTester;

// One element. Walked by reading its fields; all text is UTF-8, as the parser delivers it.
//
// Names and short values are shared by the elements of one document, so copies cost no memory.
//
// Ownership: a node owns its children. The tree may be as deep as a document says and is released without recursion.
// Threads:   one at a time, and all texts of one document on one thread.
class XMLDOMNodeAString : public Object {
public:
    XMLDOMNodeAString() = default;

    AString name;                                   // the tag; a prefix stays part of it
    BasicArray<Pair<AString, AString>> attributes;  // (name, value) in document order
    BasicArray<RefPointer<XMLDOMNodeAString>> children;
    BasicArray<AString> textLines;  // the element's own text, without its children's: trimmed lines, none of them empty

    // Parses a whole document, whose root element becomes this node. Meant for a fresh node, which is not emptied
    // first: its name and text are replaced, while attributes are set and children added.
    //
    // `tester`, unless null, sees the root element before anything below it is read and can reject the document. False
    // when it does, when the text is malformed or 2^31 bytes or longer, or when what it declares stands for far more
    // than it writes out; the node is empty then.
    //
    // A text that is moved in is let go of as soon as the parser has its copy.
    //
    // What a tester or an allocation of ours throws leaves the node empty too, and goes on; memory that the parser
    // under it cannot get counts as malformed text.
    [[nodiscard]] bool Parse(AString text, XMLDOMNodeAStringTester* tester);

    // The value of the first attribute of that name, or null. Good until the attributes change. For readers that look
    // up many attributes: makes no text of the name.
    const AString* FindAttribute(std::string_view attributeName) const;
    // The same; false leaves `value` alone.
    bool GetAttribute(const AString& attributeName, AString& value) const;
    bool GetAttribute(const AString& attributeName, String& value) const;
    // Replaces the value where it stands, or appends the attribute.
    void SetAttribute(const AString& attributeName, const AString& value);

    // The first child of that name, or null. Good while this node holds the child.
    XMLDOMNodeAString* FindChild(const AString& childName) const;

    // The lines with a line feed between each two.
    AString GetText() const;
    void GetText(String& text) const;
    void GetName(String& text) const;

protected:
    ~XMLDOMNodeAString() override;

private:
    void Empty();
};

// The node into which a document's root element is parsed.
class XMLDOMAString : public XMLDOMNodeAString {
protected:
    ~XMLDOMAString() override = default;
};

// Rejects a document by its root element, while it is being parsed.
class XMLDOMNodeAStringTester : public Object {
public:
    // Called once for a parse, with the root element as its start tag gives it: name and attributes, no children. False
    // ends the parse, which then fails. A tester must not keep the node.
    virtual bool Test(const XMLDOMNodeAString& root) = 0;

protected:
    ~XMLDOMNodeAStringTester() override = default;
};

}  // namespace ZEMA

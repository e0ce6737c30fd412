// Rejects a document by its root element, while it is being parsed.
#pragma once

#include "core/Object.h"

namespace ZEMA {

class XMLDOMNodeAString;

class XMLDOMNodeAStringTester : public Object {
public:
    // Called once for a parse, with the root element as its start tag gives it: name and attributes, no children. False
    // ends the parse, which then fails. A tester must not keep the node.
    virtual bool Test(const XMLDOMNodeAString& root) = 0;

protected:
    ~XMLDOMNodeAStringTester() override = default;
};

}  // namespace ZEMA

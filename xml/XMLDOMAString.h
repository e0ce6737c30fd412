// A whole XML document.
#pragma once

#include "xml/XMLDOMNodeAString.h"

namespace ZEMA {

// The node into which a document's root element is parsed.
class XMLDOMAString : public XMLDOMNodeAString {
protected:
    ~XMLDOMAString() override = default;
};

}  // namespace ZEMA

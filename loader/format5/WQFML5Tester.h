// Rejects documents that are not of markup format 5 before they are read to their end.
#pragma once

#include "core/RefPointer.h"
#include "loader/ModelLoader.h"
#include "xml/XMLDOMNodeAString.h"

namespace ZEMA {

// Whether the root is an element "WQFML" of version 5.0 exactly; a missing version number counts as 0. Raises what is
// wrong with it.
bool IsWQFML5Root(const XMLDOMNodeAString& root, ModelLoader& loader);

// Asks that of the root while the rest is still unread, so that a document of another format fails for that reason even
// when it is malformed further on.
//
// Ownership: keeps the loader, which receives the errors, alive.
class WQFML5Tester : public XMLDOMNodeAStringTester {
public:
    explicit WQFML5Tester(const RefPointer<ModelLoader>& errorReceiver);

    bool Test(const XMLDOMNodeAString& root) override;

protected:
    ~WQFML5Tester() override;

private:
    RefPointer<ModelLoader> loader;
};

}  // namespace ZEMA

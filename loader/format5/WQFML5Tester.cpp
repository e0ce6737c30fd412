#include "loader/format5/WQFML5Tester.h"

#include "loader/ModelLoaderErrors.h"
#include "loader/format5/ElementReader.h"
#include "xml/XMLDOMNodeAString.h"

namespace ZEMA {

bool IsWQFML5Root(const XMLDOMNodeAString& root, ModelLoader& loader) {
    if (root.name != "WQFML") {
        loader.Raise(New<ContentError>(ContentError::MissingWQFMLTag));
        return false;
    }
    std::uint32_t versionMajor = 0;
    std::uint32_t versionMinor = 0;
    ReadUnsigned(root, "versionMajor", versionMajor);
    ReadUnsigned(root, "versionMinor", versionMinor);
    // Exactly this one: what another minor version would mean, nobody has said.
    const Version expected(5);
    const Version actual(versionMajor, versionMinor);
    if (actual == expected) return true;
    loader.Raise(New<VersionError>(expected, actual));
    return false;
}

WQFML5Tester::WQFML5Tester(const RefPointer<ModelLoader>& errorReceiver) : loader(errorReceiver) {}

WQFML5Tester::~WQFML5Tester() = default;

bool WQFML5Tester::Test(const XMLDOMNodeAString& root) {
    return IsWQFML5Root(root, *loader);
}

}  // namespace ZEMA

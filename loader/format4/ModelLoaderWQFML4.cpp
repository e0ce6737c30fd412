#include "loader/format4/ModelLoaderWQFML4.h"

#include <algorithm>

#include "loader/ModelLoaderErrors.h"
#include "loader/format4/ModelLoaderWQFML4State.h"

namespace ZEMA {

namespace {

// Whether a part stands at each control point, all of them in one assembly or all in none.
bool IsComplete(const StorageScene::Flex& flex) {
    return std::all_of(flex.parts.begin(), flex.parts.end(), [&](const StorageScene::Part* part) {
        return part != nullptr && flex.parts[0] != nullptr && part->assembly == flex.parts[0]->assembly;
    });
}

}  // namespace

ModelLoaderWQFML4::ModelLoaderWQFML4() = default;
ModelLoaderWQFML4::~ModelLoaderWQFML4() = default;

bool ModelLoaderWQFML4::LoadScene(AString content, StorageScene* scene, std::uint32_t options) {
    scene->Clear();
    ClearErrors();
    indexBudget = IndexBudget(content.Length());
    WQFML4::ParseState state(*this, scene, options, indexBudget);
    const bool parsed = state.Parse(content);
    state.EndText();  // where the document breaks off in a metadata entry
    if (!parsed) {
        Raise(New<ParserError>());
        return false;
    }
    if (errorMask != 0) return false;
    if (state.rootCount == 0) {
        Raise(New<ContentError>(ContentError::MissingWQFMLTag));
        return false;
    }
    return std::all_of(state.flexes.begin(), state.flexes.end(),
                       [](const StorageScene::Flex* flex) { return IsComplete(*flex); });
}

}  // namespace ZEMA

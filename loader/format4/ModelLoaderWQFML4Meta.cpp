// Metadata.
#include "loader/format4/ModelLoaderWQFML4State.h"

namespace ZEMA::WQFML4 {

namespace {

// Text behind an element in an entry is no part of the entry's value.
void StartInEntry(ParseState& state, std::string_view, Attributes) {
    state.EndText();
    state.Skip();
}

void EndInEntry(ParseState& state, std::string_view) {
    state.EndText();
    state.PopHandlers();
}

String AsciiOf(std::string_view text) {
    String result;
    result.AssignBytes(text.data(), static_cast<std::uint32_t>(text.size()));
    return result;
}

// Components that the text does not reach keep what an earlier entry gave them.
void ReadBrickSetVersion(ParseState& state, const String& text) {
    std::uint32_t position = 0;
    state.brickSetVersion.ParseFrom(text, position);
}

void StartInMeta(ParseState& state, std::string_view name, Attributes attributes) {
    state.scene->meta.PushBack({});
    StorageScene2::Meta& entry = state.scene->meta.Back();
    entry.name = AsciiOf(name);
    for (const Attribute attribute : attributes) {
        entry.attributes.PushBack({AsciiOf(attribute.name), attribute.Ascii()});
        if (name == "BrickSet" && attribute.name == "version") {
            ReadBrickSetVersion(state, entry.attributes.Back().value);
        }
    }
    state.PushHandlers({StartInEntry, EndInEntry});
    state.BeginText();
}

void EndInMeta(ParseState& state, std::string_view name) {
    state.PopHandlersAt("Meta", name);
}

}  // namespace

const Handlers kMeta{StartInMeta, EndInMeta};

}  // namespace ZEMA::WQFML4

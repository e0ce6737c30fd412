#include "loader/format4/ParseState.h"

#include "core/ByteText.h"

namespace ZEMA::WQFML4 {

namespace {

void StartSkipped(ParseState& state, std::string_view, Attributes) {
    state.Skip();
}

void EndSkipped(ParseState& state, std::string_view) {
    state.PopHandlers();
}

}  // namespace

std::uint32_t Attribute::UInt32() const {
    return ParseUInt32(value.data(), nullptr, 10);
}

float Attribute::Float() const {
    return ParseFloat(value.data(), nullptr);
}

String Attribute::Text() const {
    return FromUtf8(value);
}

String Attribute::Ascii() const {
    return String(value.data());
}

bool ReadComponent(const Attribute& attribute, char vectorName, Vector3& vector) {
    if (attribute.name.size() != 2 || attribute.name[0] != vectorName) return false;
    switch (attribute.name[1]) {
        case 'x':
            vector.x = attribute.Float();
            return true;
        case 'y':
            vector.y = attribute.Float();
            return true;
        case 'z':
            vector.z = attribute.Float();
            return true;
        default:
            return false;
    }
}

void Placement::Read(const Attribute& attribute) {
    if (attribute.name == "angle") {
        angle = attribute.Float();
    } else if (!ReadComponent(attribute, 'a', axis)) {
        ReadComponent(attribute, 't', translation);
    }
}

Matrix4 Placement::Transformation() const {
    return Matrix4::FromAxisAngle(axis, angle * kRadiansPerDegree, translation);
}

ParseState::ParseState(ModelLoaderWQFML4& owner, StorageScene* target, std::uint32_t optionBits, IndexBudget& budget,
                       const Handlers& document)
    : scene(target), options(optionBits), loader(&owner), indexBudget(budget) {
    DeliverText(false);
    PushHandlers(document);
}

ParseState::~ParseState() = default;

void ParseState::PopHandlersAt(std::string_view element, std::string_view name) {
    if (name == element) PopHandlers();
}

void ParseState::Skip() {
    PushHandlers({StartSkipped, EndSkipped});
}

void ParseState::BeginText() {
    text_.Clear();
    gathersText_ = true;
    DeliverText(true);
}

// The parser hands text out in pieces, as small as one byte, so it is decoded as a whole.
void ParseState::EndText() {
    if (!gathersText_) return;
    gathersText_ = false;
    DeliverText(false);
    scene->meta.Back().value = FromUtf8(text_.View());
}

void ParseState::StartElement(std::string_view name, std::span<const XMLAttribute> attributes) {
    handlerStack.Back().first(*this, name, Attributes(attributes));
}

void ParseState::EndElement(std::string_view name) {
    handlerStack.Back().second(*this, name);
}

void ParseState::CharacterData(std::string_view bytes) {
    text_.Append(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

}  // namespace ZEMA::WQFML4

#include "loader/format5/ElementReader.h"

#include <algorithm>
#include <array>

#include "core/NumberScan.h"

namespace ZEMA {

namespace {

bool ScanFloatAt(std::string_view text, float& value, std::uint32_t& position) {
    return ScanFloat(text, value, position);
}

bool ScanFloatAt(const String& text, float& value, std::uint32_t& position) {
    return text.ScanFloat(value, position);
}

// Up to nine digits and nothing else, which is what nearly all numbers are.
bool ScanPlainDigits(std::string_view text, std::uint32_t& value) {
    if (text.empty() || text.size() > 9) return false;
    std::uint32_t number = 0;
    for (const char byte : text) {
        if (byte < '0' || byte > '9') return false;
        number = number * 10 + static_cast<std::uint32_t>(byte - '0');
    }
    value = number;
    return true;
}

template <class Text>
void ScanFloatsOf(const Text& text, std::span<float> values) {
    std::uint32_t position = 0;
    for (float& value : values) {
        ScanFloatAt(text, value, position);
        ++position;
    }
}

// The component of a vector that has an attribute of its own, such as "ax" for the vector "a".
void ReadComponent(const XMLDOMNodeAString& node, std::string_view name, char axis, float& value) {
    for (const auto& [key, text] : node.attributes) {
        const std::string_view keyText = key.View();
        if (keyText.size() != name.size() + 1 || keyText.back() != axis || !keyText.starts_with(name)) continue;
        ScanFloats(text, {&value, 1});
        return;
    }
}

// Four rows of three; a number that cannot be read is that of the identity.
Matrix4 ScanRows(const AString& text) {
    std::array<float, 12> rows{1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};
    ScanFloats(text, rows);
    Matrix4 result;
    for (std::size_t index = 0; index < rows.size(); ++index) result.m[index / 3 * 4 + index % 3] = rows[index];
    return result;
}

Matrix4 ReadAxisAngle(const XMLDOMNodeAString& node) {
    Vector3 axis{0, 1, 0};
    float degrees = 0;
    Vector3 translation;
    ReadVector3(node, "a", axis);
    ReadFloat(node, "angle", degrees);
    ReadVector3(node, "t", translation);
    return Matrix4::FromAxisAngle(axis, degrees * kRadiansPerDegree, translation);
}

bool ReadBehaviorAttribute(const XMLDOMNodeAString& node, BasicArray<StorageScene2::Attribute>& attributes) {
    StorageScene2::Attribute attribute;
    ReadString(node, "Key", attribute.key);
    if (attribute.key.IsEmpty()) return false;
    ReadString(node, "Value", attribute.value);
    attributes.PushBack(attribute);
    return true;
}

bool ReadBehavior(const XMLDOMNodeAString& node, StorageScene2::Behavior& behavior) {
    if (!ReadString(node, "BehaviorName", behavior.name)) return false;
    behavior.attributes.Reserve(CountChildren(node, "Attribute"));
    return ReadChildren(node, "Attribute",
                        [&](const auto& child) { return ReadBehaviorAttribute(child, behavior.attributes); });
}

}  // namespace

bool ReadUnsigned(const XMLDOMNodeAString& node, std::string_view name, std::uint32_t& value) {
    const AString* text = node.FindAttribute(name);
    return text != nullptr && ScanUnsigned(text->View(), value);
}

void ReadFloat(const XMLDOMNodeAString& node, std::string_view name, float& value) {
    if (const AString* text = node.FindAttribute(name)) ScanFloats(*text, {&value, 1});
}

void ReadBool(const XMLDOMNodeAString& node, std::string_view name, bool& value) {
    const AString* text = node.FindAttribute(name);
    if (text == nullptr) return;
    std::uint32_t position = 0;
    if (IsAscii(text->View())) {
        ScanBool(text->View(), value, position);
    } else {
        FromUtf8(text->View()).ScanBool(value, position);
    }
}

bool ReadString(const XMLDOMNodeAString& node, std::string_view name, String& value) {
    const AString* text = node.FindAttribute(name);
    if (text == nullptr) return false;
    value = FromUtf8(text->View());
    return true;
}

void ReadVector3(const XMLDOMNodeAString& node, std::string_view name, Vector3& value) {
    if (const AString* text = node.FindAttribute(name)) {
        std::array<float, 3> components{value.x, value.y, value.z};
        ScanFloats(*text, components);
        value = {components[0], components[1], components[2]};
        return;
    }
    ReadComponent(node, name, 'x', value.x);
    ReadComponent(node, name, 'y', value.y);
    ReadComponent(node, name, 'z', value.z);
}

void ScanFloats(const AString& text, std::span<float> values) {
    if (IsAscii(text.View())) {
        ScanFloatsOf(text.View(), values);
    } else {
        ScanFloatsOf(FromUtf8(text.View()), values);
    }
}

bool ScanUnsigned(std::string_view text, std::uint32_t& value) {
    if (ScanPlainDigits(text, value)) return true;
    std::uint32_t position = 0;
    return IsAscii(text) ? ScanUInt32(text, value, position) : FromUtf8(text).ScanUInt32(value, position);
}

std::size_t CountListPieces(std::string_view list) {
    if (list.empty()) return 0;
    const std::size_t separators = static_cast<std::size_t>(std::count(list.begin(), list.end(), ','));
    return separators + (list.back() == ',' ? 0 : 1);
}

bool ReadNumberList(const XMLDOMNodeAString& node, std::string_view name, std::size_t leadingZeros,
                    BasicArray<unsigned long>& numbers, MemoryBlocks* blocks) {
    const AString* list = node.FindAttribute(name);
    if (list == nullptr || list->IsEmpty()) return true;
    numbers.Reserve(leadingZeros + CountListPieces(list->View()), blocks);
    numbers.Resize(leadingZeros);
    bool complete = true;
    ForEachPiece(list->View(), ',', [&](std::string_view piece) {
        std::uint32_t number = 0;
        if (!ScanUnsigned(piece, number)) complete = false;
        numbers.PushBack(number);
    });
    return complete;
}

Matrix4 ReadTransformation(const XMLDOMNodeAString& node) {
    const AString* rows = node.FindAttribute("transformation");
    Matrix4 result = rows == nullptr ? ReadAxisAngle(node) : ScanRows(*rows);
    result.Sanitise();
    return result;
}

std::size_t CountChildren(const XMLDOMNodeAString& node, std::string_view name) {
    return static_cast<std::size_t>(std::count_if(node.children.begin(), node.children.end(),
                                                  [&](const auto& child) { return child->name == name; }));
}

bool ReadBehaviors(const XMLDOMNodeAString& owner, BasicArray<StorageScene2::Behavior>& behaviors) {
    const std::size_t count = CountChildren(owner, "Behavior");
    if (count == 0) return true;
    behaviors.Reserve(behaviors.Size() + count);
    return ReadChildren(owner, "Behavior", [&](const auto& child) {
        behaviors.PushBack({});
        return ReadBehavior(child, behaviors.Back());
    });
}

}  // namespace ZEMA

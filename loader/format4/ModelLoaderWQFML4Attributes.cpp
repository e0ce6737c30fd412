#include "loader/format4/ModelLoaderWQFML4Attributes.h"

#include "core/ByteText.h"

namespace ZEMA::WQFML4 {

std::uint32_t Attribute::UInt32() const {
    return ParseUInt32(value, nullptr, 10);
}

float Attribute::Float() const {
    return ParseFloat(value, nullptr);
}

String Attribute::Text() const {
    return FromUtf8(value);
}

String Attribute::Ascii() const {
    return String(value);
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

}  // namespace ZEMA::WQFML4

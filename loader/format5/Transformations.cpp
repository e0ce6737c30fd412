#include "loader/format5/Transformations.h"

#include <array>
#include <cstddef>

#include "loader/format5/AttributeReader.h"

namespace ZEMA {

namespace {

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

}  // namespace

Matrix4 ReadTransformation(const XMLDOMNodeAString& node) {
    const AString* rows = node.FindAttribute("transformation");
    Matrix4 result = rows == nullptr ? ReadAxisAngle(node) : ScanRows(*rows);
    result.Sanitise();
    return result;
}

}  // namespace ZEMA

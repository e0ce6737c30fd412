#include "scene/Matrix4.h"

#include <cmath>
#include <cstddef>

namespace ZEMA {

namespace {

// A row of length 1 has a component far above this. What is below in all three had no length, or one too small or too
// large to measure.
constexpr float kNoDirection = 0.00001F;

Vector3 Normalised(const Vector3& v) {
    const float length = Length(v);
    return length == 0 ? v : Vector3{v.x / length, v.y / length, v.z / length};
}

// The axis with length 1. Beyond the range of float, where squares become infinite or lose their digits, the length is
// taken in double; nowhere else, as that would change the last bits of ordinary rotations.
Vector3 AxisDirection(const Vector3& axis) {
    if (std::isnormal(axis.x * axis.x + axis.y * axis.y + axis.z * axis.z)) return Normalised(axis);
    const double x = axis.x, y = axis.y, z = axis.z;
    const double length = std::sqrt(x * x + y * y + z * z);
    return {static_cast<float>(x / length), static_cast<float>(y / length), static_cast<float>(z / length)};
}

bool HasNoDirection(const Vector3& v) {
    return std::fabs(v.x) < kNoDirection && std::fabs(v.y) < kNoDirection && std::fabs(v.z) < kNoDirection;
}

}  // namespace

float Length(const Vector3& v) {
    return std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z);
}

Matrix4 Matrix4::FromTranslation(const Vector3& translation) {
    Matrix4 result;
    result.m[12] = translation.x;
    result.m[13] = translation.y;
    result.m[14] = translation.z;
    return result;
}

Matrix4 Matrix4::FromAxisAngle(const Vector3& axis, float angle, const Vector3& translation) {
    Matrix4 result = FromTranslation(translation);
    if (axis == Vector3() || angle == 0) return result;
    const auto [x, y, z] = AxisDirection(axis);
    const float s = std::sin(angle);
    const float c = std::cos(angle);
    const float k = 1 - c;
    auto& m = result.m;
    m[0] = x * x * k + c;
    m[1] = x * y * k + z * s;
    m[2] = x * z * k - y * s;
    m[4] = x * y * k - z * s;
    m[5] = y * y * k + c;
    m[6] = y * z * k + x * s;
    m[8] = x * z * k + y * s;
    m[9] = y * z * k - x * s;
    m[10] = z * z * k + c;
    return result;
}

void Matrix4::Sanitise() {
    Matrix4 normalised = *this;
    for (const std::size_t row : {0U, 4U, 8U}) {
        const Vector3 direction = Normalised({m[row], m[row + 1], m[row + 2]});
        if (HasNoDirection(direction)) {
            *this = FromTranslation(Translation());
            return;
        }
        normalised.m[row] = direction.x;
        normalised.m[row + 1] = direction.y;
        normalised.m[row + 2] = direction.z;
    }
    *this = normalised;
}

Matrix4 operator*(const Matrix4& first, const Matrix4& second) {
    Matrix4 product;
    for (std::size_t row = 0; row < 4; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            float sum = 0;
            for (std::size_t i = 0; i < 4; ++i) sum += first.m[row * 4 + i] * second.m[i * 4 + column];
            product.m[row * 4 + column] = sum;
        }
    }
    return product;
}

}  // namespace ZEMA

// Points, directions and placements in model space.
#pragma once

#include <array>

namespace ZEMA {

// A point or a direction.
struct Vector3 {
    float x = 0;
    float y = 0;
    float z = 0;

    friend bool operator==(const Vector3& a, const Vector3& b) = default;
};

// The Euclidean length, in single precision.
float Length(const Vector3& v);

// Sixteen floats, row by row: the rotation in m[0..2], m[4..6], m[8..10], the translation in m[12..14]; m[3], m[7],
// m[11] are 0 and m[15] is 1. A point p becomes the row vector (p, 1) times the matrix.
struct Matrix4 {
    std::array<float, 16> m{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

    // The identity, moved.
    static Matrix4 FromTranslation(const Vector3& translation);

    // Rotates about `axis` through the origin by `angle` radians, then moves. The axis may have any length; when it is
    // (0, 0, 0), or the angle is 0, nothing is rotated.
    static Matrix4 FromAxisAngle(const Vector3& axis, float angle, const Vector3& translation);

    Vector3 Translation() const { return {m[12], m[13], m[14]}; }

    // Gives each rotation row length 1; a row of length 0 stays as it is. When a row then has all three components
    // below 0.00001 in magnitude the rotation was no rotation, and the matrix becomes the identity with its translation
    // kept.
    void Sanitise();

    friend bool operator==(const Matrix4& a, const Matrix4& b) = default;
};

// Both placements in turn: with row vectors, the left one acts first.
Matrix4 operator*(const Matrix4& first, const Matrix4& second);

// What one degree is in radians, as a factor in single precision.
inline constexpr float kRadiansPerDegree = 0.017453292F;

}  // namespace ZEMA

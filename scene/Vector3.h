// A point or a direction in model space.
#pragma once

namespace ZEMA {

struct Vector3 {
    float x = 0;
    float y = 0;
    float z = 0;

    friend bool operator==(const Vector3& a, const Vector3& b) = default;
};

// The Euclidean length, in single precision.
float Length(const Vector3& v);

}  // namespace ZEMA

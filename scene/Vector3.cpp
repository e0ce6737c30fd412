#include "scene/Vector3.h"

#include <cmath>

namespace ZEMA {

float Length(const Vector3& v) {
    return std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z);
}

}  // namespace ZEMA

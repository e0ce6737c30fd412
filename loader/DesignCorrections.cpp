#include "loader/DesignCorrections.h"

#include <cmath>
#include <cstddef>

#include "loader/DesignCatalogue.h"

namespace ZEMA {

namespace {

// The last brick sets whose documents still need the corrections.
constexpr Version kLastBeforeFirst(68);
constexpr Version kLastBeforeSecond(279);

constexpr Vector3 kFirstTranslation{0, 0, -0.4F};

// Turns each row of the identity about the x axis, then moves.
Matrix4 MatrixOf(const DesignCorrection& correction) {
    Matrix4 result = Matrix4::FromTranslation({0, correction.y, correction.z});
    if (correction.angle == 0) return result;
    const float s = std::sin(correction.angle);
    const float c = std::cos(correction.angle);
    result.m[5] = c;
    result.m[6] = s;
    result.m[9] = -s;
    result.m[10] = c;
    return result;
}

void Divide(StorageScene2::Part& part, const DesignTemplate& design) {
    if (design.records.Size() < 2 || part.bones.Size() != 1) return;
    const Matrix4 placement = part.bones[0]->transformation;
    part.bones.Reserve(design.records.Size());
    for (std::size_t index = 1; index < design.records.Size(); ++index) {
        const RefPointer<StorageScene2::Bone> bone = New<StorageScene2::Bone>();
        bone->transformation = design.records[index].transformation * placement;
        bone->part = &part;
        part.bones.PushBack(bone);
    }
    part.bones[0]->transformation = design.records[0].transformation * placement;
}

}  // namespace

void CorrectPart(StorageScene2::Part& part, const Version& brickSetVersion, DesignTemplates* templates) {
    if (brickSetVersion.components[0] == 0 || part.bones.Empty()) return;
    Matrix4& placement = part.bones[0]->transformation;
    if (brickSetVersion <= kLastBeforeFirst && NeedsFirstCorrection(part.designID)) {
        placement = Matrix4::FromTranslation(kFirstTranslation) * placement;
    }
    if (brickSetVersion <= kLastBeforeSecond) {
        if (const DesignCorrection* correction = FindSecondCorrection(part.designID)) {
            placement = MatrixOf(*correction) * placement;
        }
    }
    if (templates == nullptr) return;
    if (const RefPointer<DesignTemplate> design = templates->Find(part.designID)) Divide(part, *design);
}

}  // namespace ZEMA

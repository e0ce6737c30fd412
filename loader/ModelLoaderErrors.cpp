#include "loader/ModelLoaderErrors.h"

#include <span>

#include "storage/DirectoryElement.h"

namespace ZEMA {

namespace {

constexpr const char* kUnknown = "unknown";

constexpr const char* kCameraDetails[] = {"nonExistingCamera", "missingRefID", "reusedRefID"};
constexpr const char* kBrickDetails[] = {"missingRefID", "reusedRefID", "missingDesignID"};
constexpr const char* kPartDetails[] = {
    "missingRefID",
    "reusedRefID",
    "missingDesignID",
    "missingMaterial",
    "wrongMaterial",
    "wrongDecoration",
    "notOneMaterial",
    "assembly",
    "flex",
    "misc",
};
constexpr const char* kReferenceDetails[] = {"missingRefID", "reusedRefID"};  // of bones and rigids
constexpr const char* kBIDetails[] = {"nonExistingCamera", "nonExistingPart"};
constexpr const char* kContentDetails[] = {"empty", "missingWQFMLTag"};

// Content errors have a kind of their own and no name for it.
const char* KindName(std::uint32_t kind) {
    using Error = ModelLoader::Error;
    switch (kind) {
        case Error::NoError:
            return "noError";
        case Error::PathKind:
            return "pathError";
        case Error::VersionKind:
            return "versionError";
        case Error::JointKind:
            return "jointError";
        case Error::CameraKind:
            return "cameraError";
        case Error::BrickKind:
            return "brickError";
        case Error::PartKind:
            return "partError";
        case Error::BoneKind:
            return "boneError";
        case Error::RigidKind:
            return "rigidError";
        case Error::BIKind:
            return "biError";
        case Error::ParserKind:
            return "parserError";
        case Error::MiscKind:
            return "miscError";
        default:
            return kUnknown;
    }
}

void AppendDetail(String& out, std::span<const char* const> names, std::uint32_t detail) {
    out.Append(" error detail ");
    out.Append(detail < names.size() ? names[detail] : kUnknown);
}

}  // namespace

void ModelLoader::Error::Describe(String& out) const {
    out.Append(KindName(kind));
    if (description.IsEmpty()) return;
    out.Append(" Description: ");
    out.Append(description);
}

void PathError::Describe(String& out) const {
    Error::Describe(out);
    out.Append(" path ");
    const String parent = path.Parent() == nullptr ? String() : GetFullPath(*path.Parent(), true);
    out.Append(parent);
    if (!parent.IsEmpty()) out.Append("/");
    out.Append(path.Name());
}

void VersionError::Describe(String& out) const {
    Error::Describe(out);
    out.Append(" expected Version ");
    expected.AppendTo(out);
    out.Append(" actual Version ");
    actual.AppendTo(out);
}

void CameraError::Describe(String& out) const {
    Error::Describe(out);
    AppendDetail(out, kCameraDetails, detail);
}

void BrickError::Describe(String& out) const {
    Error::Describe(out);
    AppendDetail(out, kBrickDetails, detail);
}

void PartError::Describe(String& out) const {
    Error::Describe(out);
    AppendDetail(out, kPartDetails, detail);
    if (!part) return;
    out.Append(" design id ");
    out.AppendNumber(part->designID);
}

void BoneError::Describe(String& out) const {
    Error::Describe(out);
    AppendDetail(out, kReferenceDetails, detail);
}

void RigidError::Describe(String& out) const {
    Error::Describe(out);
    AppendDetail(out, kReferenceDetails, detail);
}

void BIError::Describe(String& out) const {
    Error::Describe(out);
    AppendDetail(out, kBIDetails, detail);
}

void ContentError::Describe(String& out) const {
    Error::Describe(out);
    AppendDetail(out, kContentDetails, detail);
}

}  // namespace ZEMA

#include "loader/ModelLoaderErrors.h"

#include <gtest/gtest.h>

#include "LoadedDocument.h"

namespace ZEMA::testing {
namespace {

using Error = ModelLoader::Error;

std::string Described(const RefPointer<Error>& error) {
    String text;
    error->Describe(text);
    return Utf8(text);
}

TEST(ModelLoaderErrors, AreDescribedInWords) {
    const RefPointer<StorageScene2::Part> part = New<StorageScene2::Part>(1234U);
    const struct {
        RefPointer<Error> error;
        std::uint32_t kind;
        const char* text;
    } rows[] = {
        {New<Error>(), 0, "noError"},
        {New<Error>(2048U), 2048, "miscError"},
        {New<Error>(4096U), 4096, "unknown"},
        {New<PathError>(Path()), 1, "pathError path "},
        {New<VersionError>(Version(4), Version(5)), 2, "versionError expected Version 4 actual Version 5"},
        {New<JointError>(), 4, "jointError"},
        {New<CameraError>(0U), 8, "cameraError error detail nonExistingCamera"},
        {New<CameraError>(7U), 8, "cameraError error detail unknown"},
        {New<BrickError>(2U), 16, "brickError error detail missingDesignID"},
        {New<PartError>(part, 3U), 32, "partError error detail missingMaterial design id 1234"},
        {New<PartError>(nullptr, 6U), 32, "partError error detail notOneMaterial"},
        {New<PartError>(nullptr, 7U), 32, "partError error detail assembly"},
        {New<PartError>(nullptr, 8U), 32, "partError error detail flex"},
        {New<PartError>(nullptr, 9U), 32, "partError error detail misc"},
        {New<PartError>(nullptr, 10U), 32, "partError error detail unknown"},
        {New<BoneError>(1U), 64, "boneError error detail reusedRefID"},
        {New<BoneError>(2U), 64, "boneError error detail unknown"},
        {New<RigidError>(0U), 128, "rigidError error detail missingRefID"},
        {New<BIError>(1U), 256, "biError error detail nonExistingPart"},
        {New<ParserError>(), 512, "parserError"},
        {New<ContentError>(0U), 1024, "unknown error detail empty"},
        {New<ContentError>(1U), 1024, "unknown error detail missingWQFMLTag"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.error->kind, row.kind) << row.text;
        EXPECT_EQ(Described(row.error), row.text);
    }
}

TEST(ModelLoaderErrors, ShowTheirDescriptionBeforeTheDetail) {
    const RefPointer<BIError> error = New<BIError>(0U);
    error->description = "step 3";
    EXPECT_EQ(Described(error), "biError Description: step 3 error detail nonExistingCamera");
}

}  // namespace
}  // namespace ZEMA::testing

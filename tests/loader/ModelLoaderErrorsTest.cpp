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
        const char* text;
    } rows[] = {
        {New<Error>(), "noError"},
        {New<Error>(2048U), "miscError"},
        {New<Error>(4096U), "unknown"},
        {New<VersionError>(Version(4), Version(5)), "versionError expected Version 4 actual Version 5"},
        {New<CameraError>(7U), "cameraError error detail unknown"},
        {New<PartError>(part, 3U), "partError error detail missingMaterial design id 1234"},
        {New<PartError>(nullptr, 6U), "partError error detail notOneMaterial"},
        {New<PartError>(nullptr, 7U), "partError error detail assembly"},
        {New<PartError>(nullptr, 8U), "partError error detail flex"},
        {New<PartError>(nullptr, 9U), "partError error detail misc"},
        {New<PartError>(nullptr, 10U), "partError error detail unknown"},
        {New<BoneError>(2U), "boneError error detail unknown"},
        {New<ContentError>(0U), "unknown error detail empty"},
    };
    for (const auto& row : rows) EXPECT_EQ(Described(row.error), row.text);
}

TEST(ModelLoaderErrors, ShowTheirDescriptionBeforeTheDetail) {
    const RefPointer<BIError> error = New<BIError>(0U);
    error->description = "step 3";
    EXPECT_EQ(Described(error), "biError Description: step 3 error detail nonExistingCamera");
}

}  // namespace
}  // namespace ZEMA::testing

#include "loader/ModelLoaderErrors.h"

#include <gtest/gtest.h>

#include "LoadedDocument.h"

namespace ZEMA::testing {
namespace {

using Error = ModelLoader::Error;

TEST(ModelLoaderErrors, AreDescribedInWords) {
    const RefPointer<StorageScene2::Part> part = New<StorageScene2::Part>(1234U);
    const RefPointer<BIError> described = New<BIError>(0U);
    described->description = "step 3";
    const std::pair<RefPointer<Error>, const char*> rows[] = {
        {described, "biError Description: step 3 error detail nonExistingCamera"},
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
    for (const auto& [error, text] : rows) {
        String words;
        error->Describe(words);
        EXPECT_EQ(Utf8(words), text);
    }
}

}  // namespace
}  // namespace ZEMA::testing

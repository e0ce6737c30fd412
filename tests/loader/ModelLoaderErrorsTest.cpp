#include "loader/ModelLoaderErrors.h"

#include <gtest/gtest.h>

#include "tests/loader/format5/LoadedDocument.h"

namespace ZEMA::testing {
namespace {

using Error = ModelLoader::Error;

// Those that loaders raise are seen where they are raised.
TEST(ModelLoaderErrors, AreDescribedInWords) {
    const RefPointer<BIError> described = New<BIError>(0U);
    described->description = "step 3";
    const std::pair<RefPointer<Error>, const char*> rows[] = {
        {described, "biError Description: step 3 error detail nonExistingCamera"},
        {New<Error>(), "noError"},
        {New<Error>(2048U), "miscError"},
        {New<Error>(4096U), "unknown"},
        {New<CameraError>(7U), "cameraError error detail unknown"},
        {New<PartError>(New<StorageScene2::Part>(1234U), 9U), "partError error detail misc design id 1234"},
        {New<PartError>(nullptr, 10U), "partError error detail unknown"},
        {New<BoneError>(2U), "boneError error detail unknown"},
    };
    for (const auto& [error, text] : rows) {
        String words;
        error->Describe(words);
        EXPECT_EQ(Utf8(words), text);
    }
}

}  // namespace
}  // namespace ZEMA::testing

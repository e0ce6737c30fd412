// What loaders of both formats share: reading the file, errors in words, versions.
#include "loader/ModelLoader.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "loader/ModelLoaderErrors.h"
#include "loader/Version.h"
#include "storage/local/MacOSXStorageFactory.h"
#include "tests/loader/Texts.h"
#include "tests/support/TemporaryFolder.h"

namespace ZEMA::testing {
namespace {

// Notes what it is given instead of reading it.
class NotingLoader : public ModelLoader {
public:
    using ModelLoader::Load;
    bool Load(AString content, StorageScene2*, std::uint32_t options) override {
        texts.push_back(std::string(content.View()) + "/" + std::to_string(options));
        fileIsFree = path.OpenFile(&kReadWriteStyle, false) != nullptr;
        return true;
    }

    Words texts;
    Path path;
    bool fileIsFree = false;
};

class ModelLoaderTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(files_->Attach()); }
    void TearDown() override { files_->Detach(); }

    // The path in the storage tree of a file in the folder.
    Path PathOf(const std::string& name) const { return Path(String(Bytes("file" + folder_ / name))); }

    TemporaryFolder folder_;
    RefPointer<MacOSXStorageFactory> files_ = New<MacOSXStorageFactory>();
    RefPointer<NotingLoader> loader_ = New<NotingLoader>();
    RefPointer<StorageScene2> scene_ = New<StorageScene2>();
};

TEST_F(ModelLoaderTest, ReadsTheWholeFileAndClosesIt) {
    const std::string text = std::string("<a>\0</a>", 8) + std::string(100000, '\n');
    folder_.Write("model", text);
    loader_->path = PathOf("model");
    EXPECT_TRUE(loader_->Load(loader_->path, scene_.Get(), 3));
    EXPECT_EQ(loader_->texts, Words{text + "/3"});
    EXPECT_TRUE(loader_->fileIsFree);
    EXPECT_EQ(loader_->errorMask, 0U);
}

TEST_F(ModelLoaderTest, RefusesWhatItCannotReadWhole) {
    folder_.Write("empty", "");
    std::filesystem::create_directory(folder_ / "folder");
    std::filesystem::resize_file(folder_.Write("huge", "<a/>"), std::uintmax_t{1} << 31);
    const std::string place = "pathError path file" + folder_.Path().string() + "/";
    const struct {
        const char* name;
        std::string error;
        std::uint32_t mask;
    } rows[] = {
        {"absent", place + "absent", 1},
        {"folder", place + "folder", 1},
        {"huge", place + "huge", 1},
        {"empty", "unknown error detail empty", 1024},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_FALSE(loader_->Load(PathOf(row.name), scene_.Get(), 1));
        EXPECT_EQ(Descriptions(*loader_), Words{row.error}) << "the errors of the load before are gone";
        EXPECT_EQ(loader_->errorMask, row.mask);
    }
    EXPECT_FALSE(loader_->Load(Path(), scene_.Get(), 1));
    EXPECT_EQ(Descriptions(*loader_), Words{"pathError path "});
    EXPECT_EQ(loader_->texts, Words());
}

// Those that loaders raise are seen where they are raised.
TEST_F(ModelLoaderTest, DescribesErrorsInWords) {
    const RefPointer<BIError> described = New<BIError>(0U);
    described->description = "step 3";
    for (const RefPointer<ModelLoader::Error>& error : {
             RefPointer<ModelLoader::Error>(described),
             New<ModelLoader::Error>(),
             New<ModelLoader::Error>(2048U),
             New<ModelLoader::Error>(4096U),
             RefPointer<ModelLoader::Error>(New<CameraError>(7U)),
             RefPointer<ModelLoader::Error>(New<PartError>(New<StorageScene2::Part>(1234U), 9U)),
             RefPointer<ModelLoader::Error>(New<PartError>(nullptr, 10U)),
             RefPointer<ModelLoader::Error>(New<BoneError>(2U)),
         }) {
        loader_->Raise(error);
    }
    EXPECT_EQ(Descriptions(*loader_),
              (Words{"biError Description: step 3 error detail nonExistingCamera", "noError", "miscError", "unknown",
                     "cameraError error detail unknown", "partError error detail misc design id 1234",
                     "partError error detail unknown", "boneError error detail unknown"}));
}

TEST(Version, ComparesComponentsAsNumbers) {
    EXPECT_LT(Version(1, 2), Version(1, 10));
    EXPECT_LT(Version(9, 9, 9, 9), Version(10));
    EXPECT_FALSE(Version(68, 0, 0, 1) <= Version(68));
}

TEST(Version, IsWrittenWithoutZerosAtTheEnd) {
    String out;
    for (const Version& version : {Version(), Version(4, 1), Version(4, 0, 2), Version(4294967295U, 0, 0, 1)}) {
        version.AppendTo(out);
        out.Append(" ");
    }
    EXPECT_EQ(Utf8(out), "0 4.1 4.0.2 4294967295.0.0.1 ");
}

TEST(Version, IsReadUpToFourNumbers) {
    const struct {
        const char* text;
        bool succeeds;
        Version version;  // from 9.9.9.9: components that are not reached stay
        std::uint32_t end;
    } rows[] = {{"68", true, Version(68, 9, 9, 9), 2},   {"1.2.3.4.5", true, Version(1, 2, 3, 4), 7},
                {"1.2-3", true, Version(1, 2, 9, 9), 3}, {"1.2.", false, Version(1, 2, 9, 9), 4},
                {"beta", false, Version(9, 9, 9, 9), 0}, {"1.4294967296", false, Version(1, 9, 9, 9), 12}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        Version version(9, 9, 9, 9);
        std::uint32_t position = 0;
        EXPECT_EQ(version.ParseFrom(String(row.text), position), row.succeeds);
        EXPECT_EQ(version, row.version);
        EXPECT_EQ(position, row.end);
    }
}

}  // namespace
}  // namespace ZEMA::testing

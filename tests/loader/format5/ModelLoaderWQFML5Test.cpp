#include "loader/format5/ModelLoaderWQFML5.h"

#include <gtest/gtest.h>

#include "LoadedDocument.h"
#include "loader/DesignCatalogue.h"
#include "tests/loader/DocumentCases.h"

namespace ZEMA::testing {
namespace {

TEST(ModelLoaderWQFML5, MakesOfDocumentsWhatTheyAreCasesOf) {
    for (const char* subject : {"document", "bricks", "incomplete", "systems", "values"}) {
        SCOPED_TRACE(subject);
        ExpectCases<ModelLoaderWQFML5>(std::string(ZEMA_CASES "/") + subject + ".cases");
    }
}

TEST(ModelLoaderWQFML5, LinksWhatItReads) {
    const LoadedDocument document(
        Wqfml("<Meta><BrickSet version='68.1'/><brickset version='3'/></Meta>"
              "<Cameras><Camera refID='1'/></Cameras><Bricks cameraRef='1'>" +
              BrickWithBone() + "<Brick/></Bricks>"));
    EXPECT_EQ(document.loader->errorMask, 16U);
    EXPECT_EQ(document.loader->BrickSetVersion(), Version(68, 1));
    EXPECT_EQ(document.scene->bricksCamera, document.scene->cameras[0]);
    EXPECT_EQ(document.Part(0).brick, document.scene->bricks[0].Get());
    EXPECT_EQ(document.Part(0).bones[0]->part, &document.Part(0));
}

TEST(ModelLoaderWQFML5, ClearsAllButBehaviorsAndTheBrickSetForTheNextLoad) {
    const std::string split = std::to_string(CombinedDesign().combined);
    LoadedDocument document(
        "<WQFML versionMajor='5' name='n'><Meta><BrickSet version='3.4'/></Meta><Behaviors><Behavior BehaviorName='b'/>"
        "</Behaviors><Cameras><Camera/><Camera refID='1'/></Cameras><Bricks cameraRef='1'>" +
        BrickWithBone() + "<Brick refID='2' designID='" + split + "'><Part refID='2' designID='1' materials='1'/>" +
        "</Brick></Bricks><GroupSystems><GroupSystem/></GroupSystems><RigidSystems><RigidSystem><Rigid refID='1'/>"
        "</RigidSystem></RigidSystems><BuildingInstructions><BuildingInstruction/></BuildingInstructions></WQFML>");
    const auto& [loader, scene, succeeded] = document;
    EXPECT_EQ(document.Errors(), Words{"cameraError error detail missingRefID"});
    const RefPointer<StorageScene2::Part> dropped(loader->Parts().Find(2)->second);
    EXPECT_EQ(dropped->ReferenceCount(), 2) << "held for references to it";

    EXPECT_FALSE(loader->Load("<x/>", scene.Get(), 1));
    EXPECT_EQ(document.Errors(), Words{"unknown error detail missingWQFMLTag"});
    EXPECT_EQ(loader->errorMask, 1024U);
    EXPECT_EQ(dropped->ReferenceCount(), 1);
    EXPECT_TRUE(loader->Cameras().Empty() && loader->Bricks().Empty() && loader->Parts().Empty());
    EXPECT_TRUE(loader->Bones().Empty() && loader->Rigids().Empty());
    EXPECT_EQ(document.At(), R"({"behaviors":[{"name":"b"}]})") << "the scene's behaviours stay";

    EXPECT_TRUE(loader->Load(Bytes(Wqfml("<Meta><BrickSet version='7'/></Meta>" + Bricks(""))), scene.Get(), 1));
    EXPECT_EQ(loader->BrickSetVersion(), Version(7, 4)) << "components that are not given stay";
}

}  // namespace
}  // namespace ZEMA::testing

#include "loader/format5/ModelLoaderWQFML5.h"

#include <gtest/gtest.h>

#include "LoadedDocument.h"
#include "loader/DesignCatalogue.h"

namespace ZEMA::testing {
namespace {

using Scene = StorageScene2;

// The objects in the list, "+", and the empty places, "-".
template <class T>
std::string Places(const BasicArray<RefPointer<T>>& list) {
    std::string places;
    for (const auto& object : list) places += object ? "+" : "-";
    return places;
}

TEST(ModelLoaderWQFML5, JudgesTheRootBeforeTheRest) {
    const std::pair<const char*, const char*> rows[] = {
        {"", "parserError"},
        {"<<WQFML versionMajor='4'/>", "parserError"},
        {"<WQFML versionMajor='5'><Bricks></WQFML>", "parserError"},
        {"<Model><a></Model>", "unknown error detail missingWQFMLTag"},
        {"<wqfml versionMajor='5'><Bricks/></wqfml>", "unknown error detail missingWQFMLTag"},
        {"<WQFML versionMajor='4' versionMinor='0'><a></WQFML>", "versionError expected Version 5 actual Version 4"},
        {"<WQFML versionMajor='five'><Bricks/></WQFML>", "versionError expected Version 5 actual Version 0"},
    };
    for (const auto& [text, error] : rows) {
        SCOPED_TRACE(text);
        const LoadedDocument document(text);
        EXPECT_FALSE(document.succeeded);
        EXPECT_EQ(document.Errors(), Words{error});
    }
}

TEST(ModelLoaderWQFML5, ReadsTheFirstSectionOfANameOnly) {
    const LoadedDocument document(Wqfml(Bricks("") + Bricks(BrickWithBone())));
    EXPECT_TRUE(document.succeeded && document.scene->bricks.Empty());
    const LoadedDocument none(Wqfml("<Cameras><Camera refID='1'/></Cameras><bricks/>"));
    EXPECT_FALSE(none.succeeded) << "there must be one of bricks";
    EXPECT_EQ(none.Errors(), Words());
    ASSERT_EQ(none.scene->cameras.Size(), 1U);
    EXPECT_EQ(none.scene->cameras[0]->fieldOfView, 80);
    const LoadedDocument blind(Wqfml("<Bricks cameraRef='9'/>"));
    EXPECT_TRUE(blind.succeeded) << "a camera that there is not is no reason to fail";
    EXPECT_EQ(blind.Errors(), Words{"cameraError error detail nonExistingCamera"});
}

TEST(ModelLoaderWQFML5, LeavesOutWhatIsWrongWithAllBelow) {
    const LoadedDocument document(Wqfml(
        "<Cameras><Camera/><Camera refID='1'/><Camera refID='1'/><camera/></Cameras><Bricks cameraRef='1'>"
        "<Brick designID='1'><Part/></Brick><Brick refID='1'/><Brick refID='1' designID='0'/><brick/>"
        "<Brick refID='1' designID='4'>"
        "<Part designID='2'><Bone/></Part><Part refID='1'/><Part refID='1' designID='x'/>"
        "<Part refID='1' designID='5' materials='' decoration='x'><Bone/></Part>"
        "<Part refID='1' designID='6' materials='1,x,3' decoration='5,6'><Bone/><Bone refID='1'/><Bone "
        "refID='1'/></Part>"
        "<Part refID='1' designID='7' materials='5'><Bone/></Part>"
        "<Part refID='2' designID='8' materials='5' decoration='x'/>"
        "</Brick><Brick refID='1' designID='5'><Part/></Brick></Bricks><GroupSystems><GroupSystem/></GroupSystems>"));
    EXPECT_FALSE(document.succeeded);
    const std::string part = "partError error detail ";
    EXPECT_EQ(document.Errors(),
              (Words{"cameraError error detail missingRefID", "cameraError error detail reusedRefID",
                     "brickError error detail missingRefID", "brickError error detail missingDesignID",
                     "brickError error detail missingDesignID", part + "missingRefID", part + "missingDesignID",
                     part + "missingDesignID", part + "missingMaterial design id 5", part + "wrongMaterial design id 6",
                     "boneError error detail missingRefID", "boneError error detail reusedRefID", part + "reusedRefID",
                     part + "wrongDecoration design id 8", "brickError error detail reusedRefID"}));
    EXPECT_EQ(document.loader->errorMask, 8U | 16U | 32U | 64U);
    EXPECT_EQ(document.scene->bricksCamera, document.scene->cameras[0]);
    ASSERT_EQ(document.scene->bricks.Size(), 1U);
    ASSERT_EQ(document.scene->bricks[0]->parts.Size(), 2U);
    EXPECT_EQ(NumbersOf(document.Part(0).materials), (Numbers{1, 0, 3}));
    EXPECT_EQ(NumbersOf(document.Part(0).decoration), (Numbers{0, 5, 6}));
    EXPECT_EQ(document.Part(0).bones.Size(), 1U);
    EXPECT_EQ(NumbersOf(document.Part(0, 1).decoration), (Numbers{0, 0}));
    for (const auto& kept : document.scene->bricks[0]->parts) EXPECT_EQ(kept->brick, document.scene->bricks[0].Get());
    EXPECT_TRUE(document.scene->groupSystems.Empty()) << "a failing bricks section ends the load";
}

TEST(ModelLoaderWQFML5, LeavesPlacesForUnknownReferences) {
    const LoadedDocument document(Wqfml(
        Bricks(BrickWithBone()) +
        "<GroupSystems><GroupSystem><Group partRefs='1,99,x' name='g' t='1,2,3' pivot='4,5,6'><Group "
        "partRefs='1'/></Group></GroupSystem></GroupSystems>"
        "<RigidSystems><RigidSystem><Rigid boneRefs='1'/><Rigid refID='1' boneRefs='1,2'/><Rigid refID='1'/>"
        "<Joint type='hinge'><RigidRef rigidRef='2'/></Joint><Joint/><Joint type='Ball'/></RigidSystem>"
        "<RigidSystem><Joint type='hinge'><RigidRef rigidRef='2'/><RigidRef/></Joint><Rigid refID='2'/></RigidSystem>"
        "</RigidSystems><BuildingInstructions><BuildingInstruction><PartRef/><Camera cameraRef='9'/><Camera/>"
        "<Step><PartRef/><Step/><PartRef partRef='1'/></Step></BuildingInstruction></BuildingInstructions>"));
    EXPECT_FALSE(document.succeeded);
    EXPECT_EQ(document.Errors(),
              (Words{"rigidError error detail missingRefID", "rigidError error detail reusedRefID", "jointError",
                     "jointError", "jointError", "biError error detail nonExistingCamera",
                     "biError error detail nonExistingPart"}));
    const Scene::Group& group = *document.scene->groupSystems[0].groups[0];
    EXPECT_EQ(Places(group.parts), "+--");
    EXPECT_EQ(Utf8(group.name), "g");
    EXPECT_EQ(group.transformation.Translation(), (Vector3{1, 2, 3}));
    EXPECT_EQ(group.pivot, (Vector3{4, 5, 6}));
    EXPECT_EQ(Places(group.groups[0]->parts), "+");
    const auto& systems = document.scene->rigidSystems;
    ASSERT_EQ(systems[0].rigids.Size(), 1U);
    EXPECT_EQ(Places(systems[0].rigids[0]->bones), "+-");
    EXPECT_TRUE(systems[0].joints.Empty());
    ASSERT_EQ(systems[1].joints.Size(), 1U) << "joints come after all rigids of their system";
    EXPECT_EQ(systems[1].joints[0].rigid1, systems[1].rigids[0]);
    EXPECT_EQ(systems[1].joints[0].rigid2, nullptr);
    EXPECT_EQ(systems[1].joints[0].type, 0U);
    const auto& events = document.scene->buildingInstructions[0].events;
    ASSERT_EQ(events.Size(), 2U);
    EXPECT_EQ(static_cast<const Scene::BICamera&>(*events[0]).camera, nullptr);
    const auto& inStep = static_cast<const Scene::BIStep&>(*events[1]).events;
    ASSERT_EQ(inStep.Size(), 3U);
    EXPECT_EQ(static_cast<const Scene::BIPart&>(*inStep[0]).part, nullptr);
    EXPECT_EQ(inStep[1]->type, Scene::BIEvent::kStep);
    EXPECT_EQ(static_cast<const Scene::BIPart&>(*inStep[2]).part.Get(), &document.Part(0));
}

TEST(ModelLoaderWQFML5, ReadsNamesMetadataAndCameras) {
    const LoadedDocument document(
        "<WQFML versionMajor='5' name='H\u00fctte'><Meta><Application name='B' version='2'/><BrickSet "
        "version='68.1'/><brickset version='3'/>"
        "<Description>one <b/>\n\n two</Description></Meta>"
        "<Cameras><Camera refID='1' name='n' distance='2.5' fieldOfView='60' orthographic='true' t='1,2,3'/>"
        "<Camera refID='2' distance='x' fieldOfView='60' orthographic='45'/></Cameras>"
        "<Bricks><Brick refID='1' designID='1' itemNos='41, 42'/></Bricks></WQFML>");
    ASSERT_TRUE(document.succeeded);
    Scene& scene = *document.scene;
    EXPECT_EQ(Utf8(scene.name), "H\u00fctte");
    EXPECT_EQ(Utf8(scene.meta[0].attributes[1].key) + Utf8(scene.meta[0].attributes[1].value), "version2");
    EXPECT_EQ(Utf8(scene.meta[3].name) + ":" + Utf8(scene.meta[3].value), "Description:one\ntwo");
    EXPECT_EQ(document.loader->BrickSetVersion(), Version(68, 1));
    const Scene::Camera& camera = *scene.cameras[0];
    EXPECT_EQ(camera.distance, 2.5F);
    EXPECT_EQ(camera.transformation.Translation(), (Vector3{1, 2, 3}));
    EXPECT_EQ(camera.fieldOfView, 60) << "\"true\" is no number";
    EXPECT_EQ(scene.cameras[1]->fieldOfView, 45) << "a number replaces the field of view";
    EXPECT_FALSE(camera.orthographic || scene.cameras[1]->orthographic);
    EXPECT_EQ(scene.cameras[1]->distance, 0);
    EXPECT_EQ(Utf8(scene.bricks[0]->itemNos), "41, 42");
}

TEST(ModelLoaderWQFML5, KeepsWhatCouldBeReadOfBehaviors) {
    const std::string behavior =
        "<Other BehaviorName='z'/><Behavior BehaviorName='a'><Attribute Value='lost'/><Attribute Key='k' Value='v'/>"
        "<attribute Key='z'/><Attribute Key='only'/></Behavior><Behavior name='b'><Attribute Key='unread'/></Behavior>";
    const LoadedDocument document(
        Wqfml("<Behaviors>" + behavior + "</Behaviors>" +
              Bricks("<Brick refID='1' designID='1'>" + behavior + "<Part refID='1' designID='1' materials='1'>" +
                     behavior + "<Bone refID='1'>" + behavior + "</Bone></Part></Brick>")));
    EXPECT_FALSE(document.succeeded);
    EXPECT_EQ(document.Errors(), Words());
    Scene& scene = *document.scene;
    ASSERT_EQ(scene.bricks.Size(), 1U);
    auto& part = document.Part(0);
    for (auto* list : {&scene.behaviors, &scene.bricks[0]->behaviors, &part.behaviors, &part.bones[0]->behaviors}) {
        ASSERT_EQ(list->Size(), 2U);
        const Scene::Behavior& first = (*list)[0];
        EXPECT_EQ(Utf8(first.name), "a");
        EXPECT_EQ(Utf8(first.attributes[0].key) + Utf8(first.attributes[0].value), "kv");
        EXPECT_EQ(Utf8(first.attributes[1].key) + Utf8(first.attributes[1].value), "only");
        EXPECT_TRUE((*list)[1].name.IsEmpty() && (*list)[1].attributes.Empty());
    }
}

// Each stands alone with the reason for which the load fails; what is sound follows it.
TEST(ModelLoaderWQFML5, FailsWithoutAnErrorForWhatIsIncomplete) {
    const std::string bad = "<Behavior name='b'/><Behavior BehaviorName='b'/>";
    const auto brick = [](const std::string& inBrick, const std::string& inPart, const std::string& inBone) {
        return Bricks("<Brick refID='1' designID='1'>" + inBrick + "<Part refID='1' designID='2' materials='3'>" +
                      inPart + "<Bone refID='1'>" + inBone + "</Bone><Bone refID='2'/></Part>" +
                      "<Part refID='2' designID='2' materials='3'/></Brick><Brick refID='2' designID='1'/>");
    };
    const auto groups = [&](const std::string& group) {
        return brick("", "", "") + "<GroupSystems><GroupSystem>" + group +
               "<Group/></GroupSystem><GroupSystem/></GroupSystems>";
    };
    const struct {
        const char* what;
        std::string sections;
        bool succeeds = false;
    } rows[] = {
        {"nothing is wrong", groups("<Group partRefs='1,2'/>"), true},
        {"no bricks", "<Meta/>"},
        {"a behavior of the model", "<Behaviors>" + bad + "</Behaviors>" + brick("", "", "")},
        {"an attribute without a key",
         "<Behaviors><Behavior BehaviorName='b'><Attribute Value='v'/><Attribute Key='k'/></Behavior></Behaviors>" +
             brick("", "", "")},
        {"a behavior of a brick", brick(bad, "", "")},
        {"a behavior of a part", brick("", bad, "")},
        {"a behavior of a bone", brick("", "", bad)},
        {"a behavior of a group", groups("<Group>" + bad + "</Group>")},
        {"a behavior of a group in a group", groups("<Group><Group>" + bad + "</Group><Group/></Group>")},
        {"a part of a group", groups("<Group partRefs='9,1'/>")},
        {"a part of a group in a group", groups("<Group><Group partRefs='9'/><Group/></Group>")},
        {"a bone of a rigid", brick("", "", "") + "<RigidSystems><RigidSystem><Rigid refID='1' boneRefs='9,1'/>" +
                                  "<Rigid refID='2'/></RigidSystem><RigidSystem/></RigidSystems>"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const LoadedDocument document(Wqfml(row.sections));
        EXPECT_EQ(document.succeeded, row.succeeds);
        EXPECT_EQ(document.Errors(), Words());
    }
}

TEST(ModelLoaderWQFML5, FillsBothEndsOfAJoint) {
    const LoadedDocument document(Wqfml(
        Bricks("") +
        "<RigidSystems><RigidSystem><Rigid refID='1' t='1,0,0'/><Rigid refID='2'/><Joint type='ball' name='j'>"
        "<RigidRef rigidRef='1' a='1,0,0' zx='5'/><RigidRef rigidRef='1' t='1,2,3'/><RigidRef rigidRef='2' a='4,4,4'/>"
        "</Joint></RigidSystem></RigidSystems>"));
    ASSERT_TRUE(document.succeeded);
    const auto& system = document.scene->rigidSystems[0];
    const Scene::Joint& joint = system.joints[0];
    EXPECT_EQ(joint.rigid1, system.rigids[0]);
    EXPECT_EQ(joint.rigid2, system.rigids[1]) << "a third end takes the place of the second";
    EXPECT_EQ(Utf8(joint.name), "j");
    EXPECT_EQ(joint.type, 1U);
    const Vector3 vectors[] = {joint.a1, joint.z1, joint.t1, joint.a2, joint.z2, joint.t2};
    const Vector3 expected[] = {{1, 0, 0}, {5, 0, 1}, {0, 0, 0}, {4, 4, 4}, {0, 0, 1}, {1, 2, 3}};
    for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(vectors[i], expected[i]) << i;
}

TEST(ModelLoaderWQFML5, ReadsExplodedStepsAndPartsOnly) {
    const LoadedDocument document(
        Wqfml(Bricks(BrickWithBone()) +
              "<BuildingInstructions><BuildingInstruction name='i'><Step name='s' exploded='yes' a='1,2,3'>"
              "<PartRef partRef='1' exploded='1' t='4,5,6'/><PartRef partRef='1' t='4,5,6'/></Step><Step a='1,2,3'/>"
              "</BuildingInstruction></BuildingInstructions>"));
    ASSERT_TRUE(document.succeeded);
    const auto& events = document.scene->buildingInstructions[0].events;
    const auto& step = static_cast<const Scene::BIStep&>(*events[0]);
    EXPECT_EQ(step.a, (Vector3{1, 2, 3}));
    EXPECT_EQ(static_cast<const Scene::BIPart&>(*step.events[0]).transformation.Translation(), (Vector3{4, 5, 6}));
    EXPECT_EQ(static_cast<const Scene::BIPart&>(*step.events[1]).transformation, Matrix4());
    EXPECT_EQ(static_cast<const Scene::BIStep&>(*events[1]).a, Vector3());
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
    const RefPointer<Scene::Part> dropped(loader->Parts().Find(2)->second);
    EXPECT_EQ(dropped->ReferenceCount(), 2) << "held for references to it";

    EXPECT_FALSE(loader->Load("<x/>", scene.Get(), 1));
    EXPECT_EQ(document.Errors(), Words{"unknown error detail missingWQFMLTag"});
    EXPECT_EQ(loader->errorMask, 1024U);
    EXPECT_EQ(dropped->ReferenceCount(), 1);
    EXPECT_TRUE(loader->Cameras().Empty() && loader->Bricks().Empty() && loader->Parts().Empty());
    EXPECT_TRUE(loader->Bones().Empty() && loader->Rigids().Empty());
    EXPECT_TRUE(scene->name.IsEmpty() && scene->cameras.Empty() && scene->bricks.Empty() && scene->meta.Empty());
    EXPECT_TRUE(scene->groupSystems.Empty() && scene->rigidSystems.Empty() && scene->buildingInstructions.Empty());
    EXPECT_EQ(scene->bricksCamera, nullptr);

    EXPECT_TRUE(loader->Load(Bytes(Wqfml("<Meta><BrickSet version='7'/></Meta>" + Bricks(""))), scene.Get(), 1));
    EXPECT_EQ(scene->behaviors.Size(), 1U) << "the scene's behaviours stay";
    EXPECT_EQ(loader->BrickSetVersion(), Version(7, 4)) << "components that are not given stay";
}

}  // namespace
}  // namespace ZEMA::testing

#include "loader/format5/ModelLoaderWQFML5.h"

#include <gtest/gtest.h>

#include "LoadedDocument.h"
#include "loader/DesignCatalogue.h"

namespace ZEMA::testing {
namespace {

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
    EXPECT_EQ(document.At(), R"({"bricks":[{"designID":4,"parts":[)"
                             R"({"bones":[{}],"decoration":[0,5,6],"designID":6,"materials":[1,0,3]},)"
                             R"({"decoration":[0,0],"designID":8,"materials":[5]}]}],"cameras":[{}]})")
        << "a failing bricks section ends the load";
    EXPECT_EQ(document.scene->bricksCamera, document.scene->cameras[0]);
    for (const auto& kept : document.scene->bricks[0]->parts) EXPECT_EQ(kept->brick, document.scene->bricks[0].Get());
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
    EXPECT_EQ(document.At("/groupSystems/0/groups/0"),
              R"({"groups":[{"parts":[[0,0]]}],"name":"g","parts":[[0,0],null,null],"pivot":[4,5,6],)"
              R"("transformation":[1,0,0,0,0,1,0,0,0,0,1,0,1,2,3,1]})");
    EXPECT_EQ(document.At("/rigidSystems"),
              R"([{"rigids":[{"bones":[[0,0,0],null]}]},)"
              R"({"joints":[{"a1":[0,1,0],"a2":[0,1,0],"rigid1":[1,0],"z1":[0,0,1],"z2":[0,0,1]}],"rigids":[{}]}])")
        << "joints come after all rigids of their system";
    EXPECT_EQ(document.At("/buildingInstructions/0"),
              R"({"events":[{"type":1},{"events":[{"type":2},{},{"part":[0,0],"type":2}]}]})");
}

TEST(ModelLoaderWQFML5, ReadsWhatADocumentSays) {
    const LoadedDocument document(
        "<WQFML versionMajor='5' name='H\u00fctte'><Meta><Application name='B' version='2'/><BrickSet "
        "version='68.1'/><brickset version='3'/><Description>one <b/>\n\n two</Description></Meta>"
        "<Cameras><Camera refID='1' name='n' distance='2.5' fieldOfView='60' orthographic='true' t='1,2,3'/>"
        "<Camera refID='2' distance='x' fieldOfView='60' orthographic='45'/><Camera refID='3'/></Cameras>"
        "<Bricks><Brick refID='1' designID='1' itemNos='41, 42'><Part refID='1' designID='2' "
        "materials='3'/></Brick></Bricks>"
        "<RigidSystems><RigidSystem><Rigid refID='1' t='1,0,0'/><Rigid refID='2'/><Joint type='ball' name='j'>"
        "<RigidRef rigidRef='1' a='1,0,0' zx='5'/><RigidRef rigidRef='1' t='1,2,3'/><RigidRef rigidRef='2' a='4,4,4'/>"
        "</Joint></RigidSystem></RigidSystems>"
        "<BuildingInstructions><BuildingInstruction name='i'><Step name='s' exploded='yes' a='1,2,3'>"
        "<PartRef partRef='1' exploded='1' t='4,5,6'/><PartRef partRef='1' t='4,5,6'/></Step><Step a='1,2,3'/>"
        "</BuildingInstruction></BuildingInstructions></WQFML>");
    ASSERT_TRUE(document.succeeded);
    EXPECT_EQ(document.loader->BrickSetVersion(), Version(68, 1));
    EXPECT_EQ(document.At("/name") + document.At("/bricks/0/itemNos"), "\"H\u00fctte\"\"41, 42\"");
    EXPECT_EQ(document.At("/meta/0/attributes/1") + document.At("/meta/3"),
              R"({"key":"version","value":"2"}{"name":"Description","value":"one\ntwo"})");
    EXPECT_EQ(document.At("/cameras"),
              R"([{"distance":2.5,"fieldOfView":60,"name":"n","transformation":[1,0,0,0,0,1,0,0,0,0,1,0,1,2,3,1]},)"
              R"({"fieldOfView":45},{}])")
        << "a number for orthographic replaces the field of view, and the switch stays off";
    EXPECT_EQ(document.At("/rigidSystems/0/joints"),
              R"([{"a1":[1,0,0],"a2":[4,4,4],"name":"j","rigid1":[0,0],"rigid2":[0,1],"t2":[1,2,3],"type":1,)"
              R"("z1":[5,0,1],"z2":[0,0,1]}])")
        << "a third end takes the place of the second";
    EXPECT_EQ(document.At("/buildingInstructions/0/events"),
              R"([{"a":[1,2,3],"events":[{"exploded":true,"part":[0,0],)"
              R"("transformation":[1,0,0,0,0,1,0,0,0,0,1,0,4,5,6,1],"type":2},{"part":[0,0],"type":2}],)"
              R"("exploded":true,"name":"s"},{}])")
        << "of what is exploded alone";
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
    for (const std::string place : {"", "/bricks/0", "/bricks/0/parts/0", "/bricks/0/parts/0/bones/0"}) {
        EXPECT_EQ(document.At(place + "/behaviors"),
                  R"([{"attributes":[{"key":"k","value":"v"},{"key":"only"}],"name":"a"},{}])")
            << place;
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
        Words errors{};
    } rows[] = {
        {"nothing is wrong", groups("<Group partRefs='1,2'/>"), true},
        {"no bricks", "<Meta/><bricks/>"},
        {"a second section of a name, which is not read", Bricks("") + Bricks("<Brick/>"), true},
        {"a camera that there is not", "<Bricks cameraRef='9'/>", true, {"cameraError error detail nonExistingCamera"}},
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
        EXPECT_EQ(document.Errors(), row.errors);
    }
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

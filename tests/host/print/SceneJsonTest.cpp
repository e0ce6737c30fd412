#include "host/print/SceneJson.h"

#include <gtest/gtest.h>

#include "host/print/CatalogueJson.h"
#include "loader/format5/ModelLoaderWQFML5.h"

namespace ZEMA::testing {

namespace {

std::string JsonOfScene(const StorageScene2& scene) {
    return JsonOf([&](JsonWriter& json) { WriteScene(scene, json); });
}

std::string JsonOfText(const std::string& text) {
    const auto scene = New<StorageScene2>();
    // The scene holds what could be read, also when the answer is false.
    static_cast<ModelLoader&>(*New<ModelLoaderWQFML5>())
        .Load(AString(text.data(), static_cast<std::uint32_t>(text.size())), scene.Get(), 0);
    return JsonOfScene(*scene);
}

constexpr const char* kIdentity = "[1,0,0,0,0,1,0,0,0,0,1,0,0,0,0,1]";

std::string WithIdentities(std::string text) {
    for (std::size_t at = text.find('@'); at != std::string::npos; at = text.find('@', at))
        text.replace(at, 1, kIdentity);
    return text;
}

}  // namespace

TEST(SceneJson, HasEveryFieldInItsPlace) {
    const std::string behavior = "<Behavior BehaviorName='b'><Attribute Key='k' Value='v'/></Behavior>";
    const std::string scene = JsonOfText(
        "<WQFML versionMajor='5' name='a&quot;&#10;&#233;&#127;'><Meta><Author name='N'/><E>t</E></Meta>"
        "<Cameras><Camera refID='1' name='c' distance='2.5' t='1,2,3'/><Camera refID='2'/></Cameras>"
        "<Behaviors>" +
        behavior +
        "</Behaviors>"
        "<Bricks cameraRef='2'><Brick refID='2' designID='1'/><Brick refID='1' designID='7' itemNos='8'>" +
        behavior + "<Part refID='1' designID='9' materials='1,2' decoration='3'>" + behavior +
        "<Bone refID='1' t='0.1,-1e10,0'>" + behavior +
        "</Bone><Bone refID='2'/></Part></Brick></Bricks>"
        "<GroupSystems><GroupSystem><Group name='g' pivot='1,2,3' partRefs='1,5'>" +
        behavior +
        "<Group/></Group><Group/></GroupSystem></GroupSystems>"
        "<RigidSystems><RigidSystem/><RigidSystem><Rigid refID='1' boneRefs='2,5,1'/>"
        "<Joint name='j' type='ball'><RigidRef rigidRef='1' a='1,0,0' t='4,5,6'/></Joint></RigidSystem></RigidSystems>"
        "<BuildingInstructions><BuildingInstruction name='i'><Camera cameraRef='1'/><Step name='s' exploded='1' "
        "a='1,2,3'>"
        "<PartRef partRef='1' exploded='1' t='1,2,3'/><Step/><Camera/><PartRef "
        "partRef='5'/></Step></BuildingInstruction>"
        "</BuildingInstructions></WQFML>");
    const std::string behaviors = R"("behaviors":[{"name":"b","attributes":[{"key":"k","value":"v"}]}])";
    EXPECT_EQ(
        scene,
        WithIdentities(
            R"({"name":"a\"\né)"
            "\x7F"
            R"(","cameras":[{"name":"c","distance":2.5,"transformation":[1,0,0,0,0,1,0,0,0,0,1,0,1,2,3,1],)"
            R"("fieldOfView":80,"orthographic":false},{"name":"","distance":0,"transformation":@,"fieldOfView":80,"orthographic":false}],)"
            R"("bricks":[{"designID":1,"itemNos":"","parts":[],"behaviors":[]},{"designID":7,"itemNos":"8","parts":[{"designID":9,"materials":[1,2],"decoration":[0,3],"bones":[)"
            R"({"transformation":[1,0,0,0,0,1,0,0,0,0,1,0,0.1,-1e+10,0,1],)" +
            behaviors + R"(},{"transformation":@,"behaviors":[]}],)" + behaviors + "}]," + behaviors +
            "}],"
            R"("rigidSystems":[{"rigids":[],"joints":[]},{"rigids":[{"transformation":@,"bones":[[1,0,1],null,[1,0,0]]}],)"
            R"("joints":[{"name":"j","rigid1":[1,0],"rigid2":null,"a1":[1,0,0],"z1":[0,0,1],"t1":[4,5,6],"a2":[0,1,0],"z2":[0,0,1],"t2":[0,0,0],"type":1}]}],)"
            R"("groupSystems":[{"groups":[{"name":"g","transformation":@,"pivot":[1,2,3],"parts":[[1,0],null],)" +
            behaviors +
            R"(,"groups":[{"name":"","transformation":@,"pivot":[0,0,0],"parts":[],"behaviors":[],"groups":[]}]},)"
            R"({"name":"","transformation":@,"pivot":[0,0,0],"parts":[],"behaviors":[],"groups":[]}]}],)"
            R"("buildingInstructions":[{"name":"i","events":[{"type":1,"camera":0},{"type":0,"name":"s","exploded":true,"a":[1,2,3],"events":[)"
            R"({"type":2,"part":[1,0],"exploded":true,"transformation":[1,0,0,0,0,1,0,0,0,0,1,0,1,2,3,1]},)"
            R"({"type":0,"name":"","exploded":false,"a":[0,0,0],"events":[]},{"type":1,"camera":null},)"
            R"({"type":2,"part":null,"exploded":false,"transformation":@}]}]}],)"
            R"("meta":[{"name":"Author","value":"","attributes":[{"key":"name","value":"N"}]},{"name":"E","value":"t","attributes":[]}],)"
            R"("bricksCamera":1,)" +
            behaviors + "}"));
}

TEST(SceneJson, TellsDetachedObjectsFromNone) {
    const auto scene = New<StorageScene2>();
    const auto group = New<StorageScene2::Group>();
    const auto rigid = New<StorageScene2::Rigid>();
    const auto gone = New<StorageScene2::Part>(1U);
    group->parts.PushBack(gone);
    rigid->bones.PushBack(New<StorageScene2::Bone>());
    scene->groupSystems.PushBack({});
    scene->groupSystems[0].groups.PushBack(group);
    scene->rigidSystems.PushBack({});
    scene->rigidSystems[0].rigids.PushBack(rigid);
    scene->rigidSystems[0].joints.PushBack({});
    scene->rigidSystems[0].joints[0].rigid2 = New<StorageScene2::Rigid>();
    scene->bricksCamera = New<StorageScene2::Camera>();
    const std::string json = JsonOfScene(*scene);
    for (const char* part : {R"("parts":["detached"])", R"("bones":["detached"])",
                             R"("rigid1":null,"rigid2":"detached")", R"("bricksCamera":"detached")"}) {
        EXPECT_NE(json.find(part), std::string::npos) << part << " in " << json;
    }
}

TEST(CatalogueJson, TellsOffsetsFromSuccessors) {
    const std::string json = JsonOf([](JsonWriter& writer) { WriteCatalogue(writer); });
    for (const char* part : {R"({"substitutions":[[)", R"("split":{"combined":)", R"("angle":0.2617994})",
                             R"("offsetBelow":"38.3.0.0"})", R"("successor":)"}) {
        EXPECT_NE(json.find(part), std::string::npos) << part;
    }
}

}  // namespace ZEMA::testing

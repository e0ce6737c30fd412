// One model with everything that both formats can say, written in both, comes to the same scene.
#include <gtest/gtest.h>

#include "host/print/JsonWriter.h"
#include "host/print/SceneJson.h"
#include "loader/format4/ModelLoaderWQFML4.h"
#include "loader/format5/ModelLoaderWQFML5.h"
#include "tests/loader/Texts.h"

namespace ZEMA::testing {
namespace {

template <class Loader>
std::string SceneOf(const std::string& text) {
    const RefPointer<ModelLoader> loader = New<Loader>();
    const auto scene = New<StorageScene2>();
    EXPECT_TRUE(loader->Load(Bytes(text), scene.Get(), 0)) << Descriptions(*loader)[0];
    return JsonOf([&](JsonWriter& json) { WriteScene(*scene, json); });
}

const char kCameras[] = "<Cameras><Camera refID='0' tx='5' ay='1'/><Camera refID='1' distance='2'/></Cameras>";

// The last piece of the flexible element, 4, stands before the first, 3, which alone tells what the whole is.
const char kFormat4[] = R"(<Scene cameraRefID='0'><Model>
  <Group refID='0' tx='1'>
    <Part refID='0' designID='7' itemNos='70' materialID='1' ax='1' ty='2'>
      <SubMaterial surfaceID='2' materialID='4'/>
      <Decoration surfaceID='2' decorationID='601'/></Part>
    <Part refID='1' designID='8' itemNos='71' materialID='2' assemblyRefID='5' assemblyID='1000'/></Group>
  <Group refID='1' ty='3'>
    <Part refID='2' designID='9' itemNos='9' materialID='3' assemblyRefID='5' assemblyID='9' tz='4'/>
    <Part refID='4' designID='10' itemNos='72' materialID='5' flexRefID='6' controlPoint='1' tx='6'/>
    <Part refID='3' designID='9' itemNos='9' materialID='9' flexRefID='6' controlPoint='0'/></Group>
  <Joint name='J' type='hinge'>
    <GroupRef groupRef='0' ax='1' ay='0' az='0' zx='0' zy='1' zz='0' tx='1' ty='2' tz='3'/>
    <GroupRef groupRef='1' ax='0' ay='0' az='1' zx='1' zy='0' zz='0' tx='4' ty='5' tz='6'/></Joint>
</Model></Scene>
<BuildingInstructions><BuildingInstruction name='B'>
  <Step cameraRefID='1' exploded='no' name='S' ax='7' ay='8' az='9'>
    <PartRef partRefID='0' tx='5'/><PartRef partRefID='2' exploded='false' tx='6'/>
    <Step name='T'><PartRef partRefID='3'/><PartRef partRefID='4'/></Step></Step>
</BuildingInstruction></BuildingInstructions>)";

// Types keep their numbers, and format 5 numbers hinge and ball the other way round. Nested steps come before parts.
const char kFormat5[] = R"(<Bricks cameraRef='0'>
  <Brick refID='0' designID='7' itemNos='70'><Part refID='0' designID='7' materials='1,0,4' decoration='0,601'>
    <Bone refID='0' transformation='1,0,0,0,1,0,0,0,1,1,2,0'/></Part></Brick>
  <Brick refID='1' designID='1000' itemNos='71'>
    <Part refID='1' designID='8' materials='2'><Bone refID='1' transformation='1,0,0,0,1,0,0,0,1,1,0,0'/></Part>
    <Part refID='2' designID='9' materials='3'><Bone refID='2' transformation='1,0,0,0,1,0,0,0,1,0,3,4'/></Part></Brick>
  <Brick refID='2' designID='10' itemNos='72'><Part refID='3' designID='10' materials='5'>
    <Bone refID='3' transformation='1,0,0,0,1,0,0,0,1,0,3,0'/>
    <Bone refID='4' transformation='1,0,0,0,1,0,0,0,1,6,3,0'/></Part></Brick>
</Bricks>
<RigidSystems><RigidSystem>
  <Rigid refID='0' tx='1' boneRefs='0,1'/><Rigid refID='1' ty='3' boneRefs='2,4,3'/>
  <Joint name='J' type='ball'>
    <RigidRef rigidRef='0' ax='1' ay='0' az='0' zx='0' zy='1' zz='0' tx='1' ty='2' tz='3'/>
    <RigidRef rigidRef='1' ax='0' ay='0' az='1' zx='1' zy='0' zz='0' tx='4' ty='5' tz='6'/></Joint>
</RigidSystem></RigidSystems>
<BuildingInstructions><BuildingInstruction name='B'>
  <Camera cameraRef='1'/>
  <Step exploded='true' name='S' ax='7' ay='8' az='9'>
    <Step name='T'><PartRef partRef='3'/></Step>
    <PartRef partRef='0'/><PartRef partRef='2' exploded='true' tx='6'/></Step>
</BuildingInstruction></BuildingInstructions>)";

TEST(BothFormats, ComeToTheSameScene) {
    const auto document = [](const std::string& version, const std::string& content) {
        return "<WQFML versionMajor='" + version + "' versionMinor='0'>" + kCameras + content + "</WQFML>";
    };
    EXPECT_EQ(SceneOf<ModelLoaderWQFML4>(document("4", kFormat4)), SceneOf<ModelLoaderWQFML5>(document("5", kFormat5)));
}

}  // namespace
}  // namespace ZEMA::testing

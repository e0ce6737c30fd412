#include "loader/ModelLoaderWQFML5.h"

#include <gtest/gtest.h>

#include <sstream>

#include "LoadedDocument.h"

namespace ZEMA::testing {
namespace {

using Scene = StorageScene2;

// Collects what a scene holds in a short notation, so that one text shows all that a load left in it:
// brick 1 with a part 2 of materials 3, 4 and decoration 0, 5 and two bones is "1{2[3,4|0,5]**}".
class Outline {
public:
    explicit Outline(const Scene& scene) {
        out_ << scene.cameras.Size() << (scene.bricksCamera ? "!" : "") << " cameras;";
        for (const auto& brick : scene.bricks) Add(*brick);
        for (const auto& system : scene.groupSystems) Add(system.groups);
        for (const auto& system : scene.rigidSystems) Add(system);
        for (const auto& instruction : scene.buildingInstructions) Add(instruction.events);
    }
    std::string Text() const { return out_.str(); }

private:
    void Add(const Scene::Brick& brick) {
        out_ << " " << brick.designID << "{";
        for (const auto& part : brick.parts) {
            EXPECT_EQ(part->brick, &brick);
            out_ << part->designID;
            Add("[", part->materials);
            Add("|", part->decoration);
            out_ << "]" << std::string(part->bones.Size(), '*');
        }
        out_ << "}";
    }
    void Add(const char* before, const BasicArray<unsigned long>& numbers) {
        for (const unsigned long& number : numbers) {
            out_ << (&number == numbers.begin() ? before : ",") << number;
        }
    }
    void Add(const BasicArray<RefPointer<Scene::Group>>& groups) {
        for (const auto& group : groups) {
            out_ << " group " << Utf8(group->name) << "(";
            for (const auto& part : group->parts) out_ << (part ? "+" : "-");
            Add(group->groups);
            out_ << ")";
        }
    }
    void Add(const Scene::RigidSystem& system) {
        for (const auto& rigid : system.rigids) {
            out_ << " rigid(";
            for (const auto& bone : rigid->bones) out_ << (bone ? "+" : "-");
            out_ << ")";
        }
        for (const auto& joint : system.joints) {
            out_ << " joint" << joint.type << "(" << (joint.rigid1 ? "+" : "-") << (joint.rigid2 ? "+" : "-") << ")";
        }
    }
    void Add(const BasicArray<RefPointer<Scene::BIEvent>>& events) {
        for (const auto& event : events) {
            if (event->type == Scene::BIEvent::kStep) {
                out_ << " step(";
                Add(static_cast<const Scene::BIStep&>(*event).events);
                out_ << ")";
            } else if (event->type == Scene::BIEvent::kCamera) {
                out_ << " camera" << (static_cast<const Scene::BICamera&>(*event).camera ? "+" : "-");
            } else {
                out_ << " part" << (static_cast<const Scene::BIPart&>(*event).part ? "+" : "-");
            }
        }
    }

    std::ostringstream out_;
};

TEST(ModelLoaderWQFML5, RefusesOtherDocuments) {
    const struct {
        const char* what;
        const char* text;
        Words errors;
        std::uint32_t mask;
    } rows[] = {
        {"no text", "", {"parserError"}, 512},
        {"not well-formed behind a good root", "<WQFML versionMajor='5'><Bricks></WQFML>", {"parserError"}, 512},
        {"not well-formed before any root", "<<WQFML versionMajor='4'/>", {"parserError"}, 512},
        {"another root", "<wqfml versionMajor='5'/>", {"unknown error detail missingWQFMLTag"}, 1024},
        {"another root, malformed later", "<OTHER><a></OTHER>", {"unknown error detail missingWQFMLTag"}, 1024},
        {"version 4, malformed later",
         "<WQFML versionMajor='4' versionMinor='0'><a></WQFML>",
         {"versionError expected Version 5 actual Version 4"},
         2},
        {"version 5.1",
         "<WQFML versionMajor='5' versionMinor='1'><Bricks/></WQFML>",
         {"versionError expected Version 5 actual Version 5.1"},
         2},
        {"no version", "<WQFML versionMajor='five'/>", {"versionError expected Version 5 actual Version 0"}, 2},
        {"no bricks section, which is no error of its own", "<WQFML versionMajor='5' versionMinor='0'/>", {}, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const LoadedDocument document(row.text);
        EXPECT_FALSE(document.succeeded);
        EXPECT_EQ(document.Errors(), row.errors);
        EXPECT_EQ(document.loader->errorMask, row.mask);
    }
}

TEST(ModelLoaderWQFML5, GoesOnAfterWhatIsWrong) {
    const std::string brick = BrickWithBone();
    const auto parts = [](const std::string& more) {
        return Bricks("<Brick refID='1' designID='1'>" + more + "<Part refID='9' designID='2' materials='3'/></Brick>");
    };
    const auto withBrick = [&](const std::string& more) { return Bricks(brick) + more; };
    const struct {
        const char* what;
        std::string sections;
        bool succeeds;
        Words errors;
        const char* outline;
    } rows[] = {
        {"a good brick", Bricks(brick), true, {}, "0 cameras; 1{2[3]*}"},
        {"only the first section of a name counts", Bricks("") + Bricks(brick), true, {}, "0 cameras;"},
        {"cameras without and with a reused refID",
         "<Cameras><Camera/><Camera refID='1'/><Camera refID='1'/><camera/></Cameras>" + Bricks(brick),
         false,
         {"cameraError error detail missingRefID", "cameraError error detail reusedRefID"},
         "1 cameras; 1{2[3]*}"},
        {"the bricks' camera",
         "<Cameras><Camera refID='7'/></Cameras><Bricks cameraRef='7'/>",
         true,
         {},
         "1! cameras;"},
        {"an unknown one",
         "<Bricks cameraRef='7'>" + brick + "</Bricks>",
         true,
         {"cameraError error detail nonExistingCamera"},
         "0 cameras; 1{2[3]*}"},
        {"bricks left out with all below them",
         Bricks("<Brick designID='1'><Part/></Brick><Brick refID='1'/><Brick refID='1' designID='0'/>" + brick +
                "<Brick refID='1' designID='5'><Part/></Brick><brick/>"),
         false,
         {"brickError error detail missingRefID", "brickError error detail missingDesignID",
          "brickError error detail missingDesignID", "brickError error detail reusedRefID"},
         "0 cameras; 1{2[3]*}"},
        {"parts without a refID or design",
         parts("<Part designID='2'/><Part refID='1'/><Part refID='1' designID='x'/>"),
         false,
         {"partError error detail missingRefID", "partError error detail missingDesignID",
          "partError error detail missingDesignID"},
         "0 cameras; 1{2[3]}"},
        {"a reused part refID",
         parts("<Part refID='9' designID='4' materials='5'/>"),
         false,
         {"partError error detail reusedRefID"},
         "0 cameras; 1{4[5]}"},
        {"a bad material",
         parts("<Part refID='1' designID='4' materials='1,x,3'/>"),
         true,
         {"partError error detail wrongMaterial design id 4"},
         "0 cameras; 1{4[1,0,3]2[3]}"},
        {"no material",
         parts("<Part refID='1' designID='4'/><Part refID='1' designID='5' materials=''/>"),
         false,
         {"partError error detail missingMaterial design id 4", "partError error detail missingMaterial design id 5"},
         "0 cameras; 1{2[3]}"},
        {"decorations",
         parts("<Part refID='1' designID='4' materials='1' decoration='5,6'/>"),
         true,
         {},
         "0 cameras; 1{4[1|0,5,6]2[3]}"},
        {"a bad decoration",
         parts("<Part refID='1' designID='4' materials='1' decoration='x'/>"),
         true,
         {"partError error detail wrongDecoration design id 4"},
         "0 cameras; 1{4[1|0,0]2[3]}"},
        {"bones without and with a reused refID",
         parts("<Part refID='1' designID='4' materials='1'><Bone/><Bone refID='1'/><Bone refID='1'/></Part>"),
         false,
         {"boneError error detail missingRefID", "boneError error detail reusedRefID"},
         "0 cameras; 1{4[1]*2[3]}"},
        {"unknown parts of a group, without an error",
         withBrick("<GroupSystems><GroupSystem><Group name='a' partRefs='1,99,x'><Group name='b' partRefs='1'/></Group>"
                   "</GroupSystem></GroupSystems>"),
         false,
         {},
         "0 cameras; 1{2[3]*} group a(+-- group b(+))"},
        {"rigids without and with a reused refID; unknown bones",
         withBrick(
             "<RigidSystems><RigidSystem><Rigid/><Rigid refID='1' boneRefs='1,2'/><Rigid refID='1'/></RigidSystem>"
             "</RigidSystems>"),
         false,
         {"rigidError error detail missingRefID", "rigidError error detail reusedRefID"},
         "0 cameras; 1{2[3]*} rigid(+-)"},
        {"joints come after all rigids",
         withBrick("<RigidSystems><RigidSystem><Joint type='hinge'><RigidRef rigidRef='1'/><RigidRef/></Joint>"
                   "<Rigid refID='1'/></RigidSystem></RigidSystems>"),
         true,
         {},
         "0 cameras; 1{2[3]*} rigid() joint0(+-)"},
        {"joints without a type or a known rigid",
         withBrick("<RigidSystems><RigidSystem><Rigid refID='1'/><Joint/><Joint type='Ball'/><Joint type='ball'/>"
                   "<Joint type='ball'><RigidRef rigidRef='2'/></Joint></RigidSystem></RigidSystems>"),
         false,
         {"jointError", "jointError", "jointError"},
         "0 cameras; 1{2[3]*} rigid() joint1(--)"},
        {"instructions",
         "<Cameras><Camera refID='3'/></Cameras>" +
             withBrick("<BuildingInstructions><BuildingInstruction><PartRef/><Camera cameraRef='9'/><Camera/>"
                       "<Step><PartRef/><Camera cameraRef='3'/><Step/><PartRef partRef='1'/></Step>"
                       "</BuildingInstruction></BuildingInstructions>"),
         false,
         {"biError error detail nonExistingCamera", "biError error detail nonExistingPart"},
         "1 cameras; 1{2[3]*} camera- step( part- camera+ step() part+)"},
        {"behaviours without a name or a key are failures only",
         "<Behaviors><Behavior/></Behaviors>" + withBrick("<Meta/>"),
         false,
         {},
         "0 cameras; 1{2[3]*}"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const LoadedDocument document(Wqfml(row.sections));
        EXPECT_EQ(document.succeeded, row.succeeds);
        EXPECT_EQ(document.Errors(), row.errors);
        EXPECT_EQ(Outline(*document.scene).Text(), row.outline);
    }
}

TEST(ModelLoaderWQFML5, ReadsNamesMetadataAndCameras) {
    const LoadedDocument document(
        "<WQFML versionMajor='5' name='H\u00fctte'><Meta><Application name='B' v='2'/><BrickSet version='68.1'/>"
        "<Description>one <b/>\n\n two</Description></Meta>"
        "<Cameras><Camera refID='1' name='n' distance='2.5' fieldOfView='60' orthographic='true' t='1,2,3'/>"
        "<Camera refID='2' distance='x' fieldOfView='60' orthographic='45'/></Cameras>"
        "<Bricks><Brick refID='1' designID='1' itemNos='41, 42'/></Bricks></WQFML>");
    ASSERT_TRUE(document.succeeded);
    Scene& scene = *document.scene;
    EXPECT_EQ(Utf8(scene.name), "H\u00fctte");
    EXPECT_EQ(Utf8(scene.meta[0].attributes[1].key) + Utf8(scene.meta[0].attributes[1].value), "v2");
    EXPECT_EQ(Utf8(scene.meta[2].name) + ":" + Utf8(scene.meta[2].value), "Description:one\ntwo");
    EXPECT_EQ(document.loader->BrickSetVersion(), Version(68, 1));
    const Scene::Camera& camera = *scene.cameras[0];
    EXPECT_EQ(camera.distance, 2.5F);
    EXPECT_EQ(camera.transformation.Translation(), (Vector3{1, 2, 3}));
    EXPECT_EQ(camera.fieldOfView, 60) << "\"true\" is no number";
    EXPECT_FALSE(camera.orthographic);
    EXPECT_EQ(scene.cameras[1]->fieldOfView, 45) << "a number replaces the field of view";
    EXPECT_FALSE(scene.cameras[1]->orthographic);
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
                     behavior + "<Bone refID='1'>" + behavior + "</Bone></Part></Brick>") +
              "<GroupSystems><GroupSystem/></GroupSystems>"));
    EXPECT_FALSE(document.succeeded);
    EXPECT_EQ(document.Errors(), Words());
    Scene& scene = *document.scene;
    ASSERT_EQ(scene.bricks.Size(), 1U);
    EXPECT_TRUE(scene.groupSystems.Empty()) << "a failing bricks section ends the load";
    auto& part = document.Part(0);
    for (auto* list : {&scene.behaviors, &scene.bricks[0]->behaviors, &part.behaviors, &part.bones[0]->behaviors}) {
        ASSERT_EQ(list->Size(), 2U);
        const Scene::Behavior& first = (*list)[0];
        EXPECT_EQ(Utf8(first.name), "a");
        ASSERT_EQ(first.attributes.Size(), 2U);
        EXPECT_EQ(Utf8(first.attributes[0].key) + Utf8(first.attributes[0].value), "kv");
        EXPECT_EQ(Utf8(first.attributes[1].key) + Utf8(first.attributes[1].value), "only");
        EXPECT_TRUE((*list)[1].name.IsEmpty() && (*list)[1].attributes.Empty());
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
    EXPECT_EQ(joint.a1, (Vector3{1, 0, 0}));
    EXPECT_EQ(joint.z1, (Vector3{5, 0, 1}));
    EXPECT_EQ(joint.a2, (Vector3{4, 4, 4}));
    EXPECT_EQ(joint.t2, (Vector3{1, 2, 3}));
    EXPECT_EQ(document.loader->Rigids().Size(), 2U);
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

TEST(ModelLoaderWQFML5, StartsTheNextLoadWithWhatALoadDoesNotClear) {
    const LoadedDocument document(
        Wqfml("<Meta><BrickSet version='3.4'/></Meta><Behaviors><Behavior BehaviorName='b'/>"
              "</Behaviors><Cameras><Camera/></Cameras><Bricks>" +
              BrickWithBone() + "</Bricks>"));
    const auto& [loader, scene, succeeded] = document;
    EXPECT_EQ(loader->errors.Size(), 1U);
    EXPECT_EQ(loader->Bones().Size(), 1U);

    EXPECT_TRUE(loader->Load(Bytes(Wqfml("<Meta><BrickSet version='7'/></Meta>" + Bricks(""))), scene.Get(), 1));
    EXPECT_TRUE(loader->errors.Empty() && loader->errorMask == 0);
    EXPECT_TRUE(scene->bricks.Empty() && loader->Bricks().Empty() && loader->Parts().Empty() &&
                loader->Bones().Empty());
    EXPECT_EQ(scene->meta.Size(), 1U);
    EXPECT_EQ(scene->behaviors.Size(), 1U) << "the scene's behaviours stay";
    EXPECT_EQ(loader->BrickSetVersion(), Version(7, 4)) << "components that are not given stay";
    EXPECT_FALSE(loader->Load("<x/>", scene.Get(), 1));
    EXPECT_TRUE(scene->meta.Empty()) << "emptied before the text is looked at";
}

}  // namespace
}  // namespace ZEMA::testing

#include "loader/ModelLoaderWQFML5.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "LoadedDocument.h"

namespace ZEMA::testing {
namespace {

using Scene = StorageScene2;

// Collects what a scene holds in the notation of documents5.txt, so that one text shows all that a load left in it.
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

// One document of documents5.txt, which says how they are written.
struct Case {
    std::string what;
    std::string text;
    Words errors;
    std::string outcome;
};

std::vector<Case> Cases() {
    std::ifstream file(ZEMA_DOCUMENTS);
    std::vector<Case> cases(1);
    bool isWhole = true;
    for (std::string line; std::getline(file, line);) {
        Case& last = cases.back();
        if (line.starts_with("#")) {
            isWhole = line.starts_with("##");
            last = {line, {}, {}, {}};
        } else if (line.starts_with("! ")) {
            last.errors.push_back(line.substr(2));
        } else if (line.starts_with("= ")) {
            last.outcome = line.substr(2);
            if (!isWhole) last.text = Wqfml(last.text);
            cases.emplace_back();
        } else {
            last.text += line;
        }
    }
    cases.pop_back();
    return cases;
}

TEST(ModelLoaderWQFML5, GoesOnAfterWhatIsWrong) {
    const std::vector<Case> cases = Cases();
    EXPECT_GT(cases.size(), 10U);
    for (const Case& one : cases) {
        SCOPED_TRACE(one.what);
        const LoadedDocument document(one.text);
        EXPECT_EQ(document.Errors(), one.errors);
        EXPECT_EQ((document.succeeded ? "true " : "false ") + Outline(*document.scene).Text(), one.outcome);
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

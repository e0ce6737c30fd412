// Groups of parts, nested as deep as a document says.
#include "core/BasicDeque.h"
#include "loader/format5/AttributeReader.h"
#include "loader/format5/Behaviors.h"
#include "loader/format5/ChildElements.h"
#include "loader/format5/ModelLoaderWQFML5.h"
#include "loader/format5/Transformations.h"

namespace ZEMA {

namespace {

// A group whose children are being read. Neither the node nor the group moves meanwhile.
struct OpenElement {
    const XMLDOMNodeAString* node;
    StorageScene2::Group* group;
    std::size_t nextChild;
};

}  // namespace

bool ModelLoaderWQFML5::ReadGroupSystems(const Node& root, StorageScene2& scene) {
    const Node* section = FindSection(root, "GroupSystems");
    if (section == nullptr) return true;
    scene.groupSystems.Reserve(CountChildren(*section, "GroupSystem"));
    return ReadChildren(*section, "GroupSystem", [&](const Node& child) {
        scene.groupSystems.PushBack({});
        Groups& groups = scene.groupSystems.Back().groups;
        groups.Reserve(CountChildren(child, "Group"));
        return ReadChildren(child, "Group", [&](const Node& group) { return ReadGroup(group, groups); });
    });
}

// A group's behaviours come after all the groups in it. The groups that are open are kept in a list of their own, since
// the nesting may be deeper than the stack.
bool ModelLoaderWQFML5::ReadGroup(const Node& node, Groups& groups) {
    bool succeeded = OpenGroup(node, groups);
    BasicDeque<OpenElement> open;
    open.PushBack({&node, groups.Back().Get(), 0});
    while (!open.Empty()) {
        OpenElement& top = open.Back();
        if (top.nextChild == top.node->children.Size()) {
            succeeded = ReadBehaviors(*top.node, top.group->behaviors) && succeeded;
            open.PopBack();
            continue;
        }
        const Node& child = *top.node->children[top.nextChild++];
        if (child.name != "Group") continue;
        succeeded = OpenGroup(child, top.group->groups) && succeeded;
        open.PushBack({&child, top.group->groups.Back().Get(), 0});
    }
    return succeeded;
}

// Reads what a group has besides groups and behaviours. It stands at the end of `groups` whatever the answer.
bool ModelLoaderWQFML5::OpenGroup(const Node& node, Groups& groups) {
    const RefPointer<StorageScene2::Group> group = New<StorageScene2::Group>();
    groups.PushBack(group);
    ReadString(node, "name", group->name);
    group->transformation = ReadTransformation(node);
    ReadVector3(node, "pivot", group->pivot);
    group->groups.Reserve(CountChildren(node, "Group"));
    return ReadReferenceList(node, "partRefs", partMap, group->parts);
}

}  // namespace ZEMA

#include "loader/format5/Behaviors.h"

#include "loader/format5/AttributeReader.h"
#include "loader/format5/ChildElements.h"

namespace ZEMA {

namespace {

bool ReadBehaviorAttribute(const XMLDOMNodeAString& node, BasicArray<StorageScene2::Attribute>& attributes) {
    StorageScene2::Attribute attribute;
    ReadString(node, "Key", attribute.key);
    if (attribute.key.IsEmpty()) return false;
    ReadString(node, "Value", attribute.value);
    attributes.PushBack(attribute);
    return true;
}

bool ReadBehavior(const XMLDOMNodeAString& node, StorageScene2::Behavior& behavior) {
    if (!ReadString(node, "BehaviorName", behavior.name)) return false;
    behavior.attributes.Reserve(CountChildren(node, "Attribute"));
    return ReadChildren(node, "Attribute",
                        [&](const auto& child) { return ReadBehaviorAttribute(child, behavior.attributes); });
}

}  // namespace

bool ReadBehaviors(const XMLDOMNodeAString& owner, BasicArray<StorageScene2::Behavior>& behaviors) {
    const std::size_t count = CountChildren(owner, "Behavior");
    if (count == 0) return true;
    behaviors.Reserve(behaviors.Size() + count);
    return ReadChildren(owner, "Behavior", [&](const auto& child) {
        behaviors.PushBack({});
        return ReadBehavior(child, behaviors.Back());
    });
}

}  // namespace ZEMA

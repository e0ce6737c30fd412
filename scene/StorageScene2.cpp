#include "scene/StorageScene2.h"

#include "core/ReleaseDeep.h"

namespace ZEMA {

StorageScene2::StorageScene2() = default;
StorageScene2::~StorageScene2() = default;

StorageScene2::Brick::~Brick() = default;
StorageScene2::Part::~Part() = default;
StorageScene2::Bone::~Bone() = default;
StorageScene2::Rigid::~Rigid() = default;
StorageScene2::BIPart::~BIPart() = default;

// Groups and steps let go of what is nested in them in a loop: a destructor inside a destructor, 200,000 deep, would
// end the stack.
StorageScene2::Group::~Group() {
    ReleaseDeep(groups, [](Group& group) { return &group.groups; });
}

StorageScene2::BIStep::~BIStep() {
    ReleaseDeep(events, [](BIEvent& event) {
        return event.type == BIEvent::kStep ? &static_cast<BIStep&>(event).events : nullptr;
    });
}

}  // namespace ZEMA

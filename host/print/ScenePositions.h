// Where the objects of a scene stand in its tree.
#pragma once

#include <array>
#include <cstddef>
#include <unordered_map>

#include "scene/StorageScene2.h"

namespace ZEMA {

// Found by hashing, so that a scene of many references is looked through once. A position is the object's index in its
// array, after those of what owns it: a bone's is that of brick, part and bone. What the scene refers to and no longer
// owns has none.
//
// Ownership: keeps nothing alive; the scene must stay as it is.
class ScenePositions {
public:
    template <std::size_t depth>
    using Position = std::array<std::size_t, depth>;

    explicit ScenePositions(const StorageScene2& scene);

    // Null when the object has no position.
    const Position<1>* Find(const StorageScene2::Camera& camera) const { return FindIn(cameras_, camera); }
    const Position<2>* Find(const StorageScene2::Rigid& rigid) const { return FindIn(rigids_, rigid); }
    const Position<2>* Find(const StorageScene2::Part& part) const { return FindIn(parts_, part); }
    const Position<3>* Find(const StorageScene2::Bone& bone) const { return FindIn(bones_, bone); }

private:
    template <class Object, std::size_t depth>
    using Table = std::unordered_map<const Object*, Position<depth>>;

    template <class Object, std::size_t depth>
    static const Position<depth>* FindIn(const Table<Object, depth>& table, const Object& object) {
        const auto found = table.find(&object);
        return found == table.end() ? nullptr : &found->second;
    }

    void EnterRigids(const StorageScene2& scene);
    void EnterParts(const StorageScene2& scene);

    Table<StorageScene2::Camera, 1> cameras_;
    Table<StorageScene2::Rigid, 2> rigids_;
    Table<StorageScene2::Part, 2> parts_;
    Table<StorageScene2::Bone, 3> bones_;
};

}  // namespace ZEMA

// What loaders have in common that read a format-4 scene first: the conversion of that scene into the form of format 5.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/BasicArray.h"
#include "core/BasicMap.h"
#include "core/BasicSet.h"
#include "core/MemoryBlocks.h"
#include "loader/ModelLoader.h"
#include "loader/format4/IndexBudget.h"
#include "scene/StorageScene.h"

namespace ZEMA {

// Each model becomes a rigid system, each group a rigid, each part a bone of a format-5 part; assemblies become bricks
// of several parts, flexible elements parts of several bones, instructions lists of events.
//
// Errors: as ModelLoader; the conversion itself finds none. Indices that would allocate too much are
//         IndexLimitExceeded, thrown like any allocation failure.
class ModelLoaderStorageScene : public ModelLoader {
public:
    using ModelLoader::Load;

    // Leaves `scene` alone when the text cannot be read.
    bool Load(AString content, StorageScene2* scene, std::uint32_t options) override;

    // Reads the text into a format-4 scene, and leaves in it what could be read, also when it answers false.
    virtual bool LoadScene(AString content, StorageScene* scene, std::uint32_t options) = 0;

    // Converts what `source` holds into `target`, which is expected empty. Cameras and metadata are exchanged, not
    // copied, and the placements in `source` are sanitised. Indices may take what LoadScene has left of its budget.
    void Convert(StorageScene* source, StorageScene2* target);

    // What became of the objects of the last conversion. Nothing keeps the two scenes alive.
    BasicMap<StorageScene::Assembly*, StorageScene2::Brick*> assemblyBricks;
    BasicMap<StorageScene::Flex*, StorageScene2::Part*> flexParts;
    BasicMap<StorageScene::Part*, StorageScene2::Part*> partParts{
        blocks_};                                  // the parts of a flexible element share one
    BasicArray<StorageScene::Flex*> placedFlexes;  // already placed by an instruction

protected:
    ModelLoaderStorageScene();
    ~ModelLoaderStorageScene() override;

    IndexBudget indexBudget;  // opened by LoadScene, which knows the length of the text

private:
    MemoryBlocks blocks_;  // of the objects that a scene has many of, with their lists

    void ClearTables();

    void ConvertModel(const StorageScene::Model& model, StorageScene2& target);
    void ConvertGroup(StorageScene::Rigid& group, StorageScene2::Rigid& rigid, StorageScene2& target);
    void ConvertBone(StorageScene::Part& source, const StorageScene::Rigid& group, StorageScene2::Part& part,
                     StorageScene2::Rigid& rigid);
    StorageScene2::Part* PartFor(StorageScene::Part& source, StorageScene2& target);
    StorageScene2::Part* MakePart(const StorageScene::Part& source, std::uint32_t designID, std::size_t boneCount,
                                  StorageScene2::Brick& brick);
    StorageScene2::Brick* AssemblyBrick(const StorageScene::Part& source, StorageScene2& target);
    void RecordControlPoints(const StorageScene::Flex& flex);

    void ConvertSteps(const BasicArray<RefPointer<StorageScene::BIStep>>& steps,
                      BasicArray<RefPointer<StorageScene2::BIEvent>>& events);
    void ConvertPlacedParts(StorageScene::BIStep& step, BasicArray<RefPointer<StorageScene2::BIEvent>>& events);
    bool PlaceOnce(StorageScene::Flex* flex);

    BasicMap<const StorageScene::Part*, std::size_t> controlPoints_;  // where each part stands in its flexible element
    BasicSet<StorageScene::Flex*> placed_;                            // the same as `placedFlexes`, to look up
};

}  // namespace ZEMA

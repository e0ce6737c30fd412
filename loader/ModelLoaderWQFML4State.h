// What one load of markup format 4 knows, and the handlers that its elements have. For the sources of that loader only.
#pragma once

#include <cstdint>
#include <exception>
#include <string_view>

#include "core/BasicArray.h"
#include "core/BasicDeque.h"
#include "core/BasicMap.h"
#include "core/Pair.h"
#include "core/RefPointer.h"
#include "loader/IndexBudget.h"
#include "loader/ModelLoaderWQFML4.h"
#include "loader/ModelLoaderWQFML4Attributes.h"
#include "loader/Version.h"
#include "scene/StorageScene.h"

struct XML_ParserStruct;

namespace ZEMA::WQFML4 {

struct ParseState;

// A handler sees the element and may switch to others for what follows. `name` is the element's.
using StartHandler = void (*)(ParseState& state, std::string_view name, Attributes attributes);
using EndHandler = void (*)(ParseState& state, std::string_view name);
using Handlers = Pair<StartHandler, EndHandler>;

// An element that pushes handlers has its content read by them; their end handler pops them again.
//
// The maps find objects by the identifiers that the document gives them; a later object takes the place of an earlier
// one. Plain pointers name objects that the scene owns.
struct ParseState {
    RefPointer<StorageScene> scene;
    std::uint32_t options = 0;
    ModelLoaderWQFML4* loader = nullptr;  // which runs this load; receives the errors
    XML_ParserStruct* parser = nullptr;
    IndexBudget* indexBudget = nullptr;  // the loader's

    std::uint32_t rootCount = 0;  // "WQFML" elements at document level
    Version brickSetVersion;      // zero until the document gives one
    BasicDeque<StorageScene::BIStep*> stepStack;  // the open steps, innermost last
    BasicMap<unsigned long, StorageScene2::Camera*> cameraMap;
    BasicMap<unsigned long, StorageScene::Rigid*> rigidMap;
    BasicMap<unsigned long, StorageScene::Part*> partMap;
    BasicMap<unsigned long, StorageScene::Assembly*> assemblyMap;
    BasicMap<unsigned long, StorageScene::Flex*> flexMap;
    BasicArray<StorageScene::Flex*> flexes;  // in the order in which they were made
    BasicDeque<Handlers> handlerStack;       // the top ones are called

    void PushHandlers(const Handlers& handlers) { handlerStack.PushBack(handlers); }
    void PopHandlers() { handlerStack.PopBack(); }
    void PopHandlersOn(std::string_view expected, std::string_view name);
    // Ignores the element with all its content.
    void Skip();

    // From here on character data goes to the value of the last metadata entry, until it ends. The value is set at the
    // end: the parser hands text out in pieces, as small as one byte.
    void BeginText();
    void EndText();

    bool HasOption(std::uint32_t option) const { return (options & option) != 0; }
    StorageScene::Model& CurrentModel() { return scene->models.Back(); }

    // Parses the whole text. What a handler throws stops the parser, and goes on when the parser has been left.
    bool Parse(const AString& text);

private:
    template <class Handler>
    void Guard(Handler handler) noexcept;
    static void OnStart(void* state, const char* name, const char** attributes);
    static void OnEnd(void* state, const char* name);
    static void OnCharacters(void* state, const char* bytes, int length);

    bool readsText_ = false;
    AString text_;  // of the metadata entry, so far
    std::exception_ptr failure_;
};

// The object that an identifier stands for, or null.
template <class T>
T* Find(const BasicMap<unsigned long, T*>& objects, std::uint32_t refID) {
    const auto position = objects.Find(refID);
    return position == objects.end() ? nullptr : position->second;
}

// By the element whose content they read.
extern const Handlers kDocument;
extern const Handlers kSkipped;
extern const Handlers kMeta;
extern const Handlers kCameras;
extern const Handlers kScene;
extern const Handlers kJoint;
extern const Handlers kGroup;
extern const Handlers kBuildingInstructions;

// Appends the joint that the element describes to the current model.
void StartJoint(ParseState& state, Attributes attributes);

}  // namespace ZEMA::WQFML4

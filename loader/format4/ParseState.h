// What the handlers of one load of markup format 4 work with: the attributes of a start tag, and the state that they
// share. For the sources of that loader only.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "core/BasicArray.h"
#include "core/BasicDeque.h"
#include "core/BasicMap.h"
#include "core/MemoryBlocks.h"
#include "core/Pair.h"
#include "core/RefPointer.h"
#include "core/String.h"
#include "loader/Version.h"
#include "loader/format4/IndexBudget.h"
#include "loader/format4/ModelLoaderWQFML4.h"
#include "scene/Matrix4.h"
#include "scene/StorageScene.h"
#include "xml/XMLEventParser.h"

namespace ZEMA::WQFML4 {

// What an identifier is that the document does not give. A written one that reads as this number counts as not given.
inline constexpr std::uint32_t kAbsent = 0xFFFFFFFF;

// One attribute of a start tag, with its value in the form that a handler asks for. Good while that handler runs.
struct Attribute : XMLAttribute {
    std::uint32_t UInt32() const;  // decimal; no digits give 0, too large and negative values 4294967295
    float Float() const;
    String Text() const;   // UTF-8
    String Ascii() const;  // empty when it holds any byte that is not ASCII
};

// The attributes of one start tag, in document order. Good while its start handler runs.
class Attributes {
public:
    class Position {
    public:
        explicit Position(const XMLAttribute* attribute) : attribute_(attribute) {}
        Attribute operator*() const { return {*attribute_}; }
        Position& operator++() {
            ++attribute_;
            return *this;
        }
        bool operator==(const Position&) const = default;

    private:
        const XMLAttribute* attribute_;
    };

    explicit Attributes(std::span<const XMLAttribute> attributes) : attributes_(attributes) {}

    Position begin() const { return Position(attributes_.data()); }
    Position end() const { return Position(attributes_.data() + attributes_.size()); }

private:
    std::span<const XMLAttribute> attributes_;
};

// Reads an attribute named `vectorName` and "x", "y" or "z" into that component; false when it is named otherwise.
bool ReadComponent(const Attribute& attribute, char vectorName, Vector3& vector);

// Where an object stands: a rotation about an axis through its origin, then a move.
struct Placement {
    Vector3 axis{0, 1, 0};
    float angle = 0;  // degrees
    Vector3 translation;

    // Attributes that say nothing about a placement are ignored.
    void Read(const Attribute& attribute);
    Matrix4 Transformation() const;
};

class ParseState;

// An element that pushes handlers has what is in it read by them: the first for each start tag, the second for each end
// tag, which pops both again at the element's own.
using StartHandler = void (*)(ParseState& state, std::string_view name, Attributes attributes);
using EndHandler = void (*)(ParseState& state, std::string_view name);
using Handlers = Pair<StartHandler, EndHandler>;

// Calls the handlers on top of a stack, which mirrors how the elements nest, and keeps what they share.
//
// The maps find objects by the identifiers that the document gives them. Of cameras, groups and parts a later one takes
// the place of an earlier one; assemblies and flexible elements are made once and joined by further parts. Plain
// pointers name objects that the scene owns.
class ParseState : public XMLEventParser {
public:
    // `document` are the handlers of what stands outside of all elements.
    ParseState(ModelLoaderWQFML4& owner, StorageScene* target, std::uint32_t optionBits, IndexBudget& budget,
               const Handlers& document);
    ~ParseState() override;

    using XMLEventParser::Parse;

    MemoryBlocks blocks;    // of the objects that a scene has many of, with their short lists
    MemoryBlocks mapNodes;  // apart, as they go before the scene does
    RefPointer<StorageScene> scene;
    const std::uint32_t options;
    ModelLoaderWQFML4* const loader;              // runs this load and receives the errors
    IndexBudget& indexBudget;                     // the loader's
    std::uint32_t rootCount = 0;                  // "WQFML" elements at document level
    Version brickSetVersion;                      // zero until the document gives one
    BasicDeque<StorageScene::BIStep*> stepStack;  // the open steps, innermost last
    BasicMap<unsigned long, StorageScene2::Camera*> cameraMap;
    BasicMap<unsigned long, StorageScene::Rigid*> rigidMap{mapNodes};
    BasicMap<unsigned long, StorageScene::Part*> partMap{mapNodes};
    BasicMap<unsigned long, StorageScene::Assembly*> assemblyMap;
    BasicMap<unsigned long, StorageScene::Flex*> flexMap;
    BasicArray<StorageScene::Flex*> flexes;  // in the order in which they were made

    bool HasOption(std::uint32_t option) const { return (options & option) != 0; }
    StorageScene::Model& CurrentModel() { return scene->models.Back(); }

    void PushHandlers(const Handlers& handlers) { handlerStack.PushBack(handlers); }
    void PopHandlers() { handlerStack.PopBack(); }
    // For end handlers: pops only at the end tag of `element`, since children that pushed nothing end there too.
    void PopHandlersAt(std::string_view element, std::string_view name);
    // Ignores the element that starts, with all its content.
    void Skip();

    // Character data is gathered for the value of the last metadata entry from here until EndText, which sets it.
    void BeginText();
    void EndText();

private:
    void StartElement(std::string_view name, std::span<const XMLAttribute> attributes) override;
    void EndElement(std::string_view name) override;
    void CharacterData(std::string_view bytes) override;

    BasicDeque<Handlers> handlerStack;  // the document's at the bottom
    bool gathersText_ = false;
    AString text_;  // gathered so far
};

// The object that an identifier stands for, or null.
template <class T>
T* Find(const BasicMap<unsigned long, T*>& objects, std::uint32_t refID) {
    const auto position = objects.Find(refID);
    return position == objects.end() ? nullptr : position->second;
}

// Named by what they read the content of.
extern const Handlers kScene;
extern const Handlers kBuildingInstructions;

}  // namespace ZEMA::WQFML4

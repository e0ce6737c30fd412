// What format-5 elements carry: values in their attributes, placements, behaviours, children by name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <string_view>

#include "core/BasicArray.h"
#include "core/BasicMap.h"
#include "core/MemoryBlocks.h"
#include "core/RefPointer.h"
#include "core/String.h"
#include "scene/Matrix4.h"
#include "scene/StorageScene2.h"
#include "xml/TextPieces.h"
#include "xml/XMLDOMNodeAString.h"

namespace ZEMA {

// Names are matched exactly. Numbers are read as the scans of String read them, without making a String of text that is
// ASCII.

// Each reads one attribute. What is absent or unreadable leaves `value` as it was, except that an empty boolean is
// false. The answer tells whether `value` was read.
bool ReadUnsigned(const XMLDOMNodeAString& node, std::string_view name, std::uint32_t& value);
void ReadFloat(const XMLDOMNodeAString& node, std::string_view name, float& value);
void ReadBool(const XMLDOMNodeAString& node, std::string_view name, bool& value);
bool ReadString(const XMLDOMNodeAString& node, std::string_view name, String& value);

// Three floats in the attribute `name`, or else one in each of `name` + "x", "y" and "z". What cannot be read stays as
// it was.
void ReadVector3(const XMLDOMNodeAString& node, std::string_view name, Vector3& value);

// Reads one float after the other. One character, whatever it is, separates each from the next; it is stepped over
// after every number, also after one that could not be read and so stays as it was.
void ScanFloats(const AString& text, std::span<float> values);

bool ScanUnsigned(std::string_view text, std::uint32_t& value);

// How many numbers a list has. Commas separate them: between two commas, and before one at the start, stands a number
// that cannot be read; behind one at the end stands nothing.
std::size_t CountListPieces(std::string_view list);

// Fills the empty `numbers` with those of a list, and 0 for each that cannot be read, and the answer is false then. An
// absent or empty attribute adds nothing; any other puts `leadingZeros` zeros in front.
bool ReadNumberList(const XMLDOMNodeAString& node, std::string_view name, std::size_t leadingZeros,
                    BasicArray<unsigned long>& numbers, MemoryBlocks* blocks = nullptr);

// The object that a number stands for, or null.
template <class T>
T* Find(const BasicMap<unsigned long, T*>& objects, std::uint32_t refID) {
    const auto position = objects.Find(refID);
    return position == objects.end() ? nullptr : position->second;
}

// Where a number stands among `objects`, or would stand. Documents number what they hold in ascending order, and then
// it is the end, without a search.
template <class T>
typename BasicMap<unsigned long, T*>::Position PlaceOf(BasicMap<unsigned long, T*>& objects, std::uint32_t refID) {
    const auto end = objects.end();
    return objects.Empty() || std::prev(end)->first < refID ? end : objects.LowerBound(refID);
}

// Whether a number is taken, with `place` as PlaceOf gives it.
template <class Map>
bool IsUsed(Map& objects, typename Map::Position place, std::uint32_t refID) {
    return place != objects.end() && place->first == refID;
}

// The object whose number stands in an attribute, or null when there is none. False when the number stands for nothing.
template <class T>
bool ReadReference(const XMLDOMNodeAString& node, std::string_view name, const BasicMap<unsigned long, T*>& objects,
                   RefPointer<T>& object) {
    std::uint32_t refID = 0;
    const bool isGiven = ReadUnsigned(node, name, refID);
    object.Reset(isGiven ? Find(objects, refID) : nullptr);
    return object || !isGiven;
}

// Appends the objects that the numbers of a list stand for, with null for each number that cannot be read or stands for
// nothing, and the answer is false then.
template <class T>
bool ReadReferenceList(const XMLDOMNodeAString& node, std::string_view name, const BasicMap<unsigned long, T*>& objects,
                       BasicArray<RefPointer<T>>& references, MemoryBlocks* blocks = nullptr) {
    const AString* list = node.FindAttribute(name);
    if (list == nullptr) return true;
    references.Reserve(references.Size() + CountListPieces(list->View()), blocks);
    bool complete = true;
    ForEachPiece(list->View(), ',', [&](std::string_view piece) {
        std::uint32_t refID = 0;
        references.PushBack(ScanUnsigned(piece, refID) ? Find(objects, refID) : nullptr);
        if (!references.Back()) complete = false;
    });
    return complete;
}

// From "transformation", the twelve floats of the four rows; or else from the axis "a", the "angle" in degrees and the
// translation "t". The rotation rows of the result have length 1, or there is no rotation.
Matrix4 ReadTransformation(const XMLDOMNodeAString& node);

// The first child of that name, or null.
inline XMLDOMNodeAString* FindSection(const XMLDOMNodeAString& root, const char* name) {
    return root.FindChild(AString(name));
}

// So that lists can be reserved before they are filled.
std::size_t CountChildren(const XMLDOMNodeAString& node, std::string_view name);

// Calls `read(child)` for every child of that name, in document order, also after one that failed. Whether all
// succeeded.
template <class Read>
bool ReadChildren(const XMLDOMNodeAString& node, std::string_view name, Read read) {
    bool succeeded = true;
    for (const auto& child : node.children) {
        if (child->name == name && !read(*child)) succeeded = false;
    }
    return succeeded;
}

// The same for a section that is not read again: each child goes when it has been read, so that its memory serves what
// it becomes, and null stands in its place.
template <class Read>
bool TakeChildren(XMLDOMNodeAString& section, std::string_view name, Read read) {
    bool succeeded = true;
    for (auto& child : section.children) {
        if (child->name == name && !read(*child)) succeeded = false;
        child.Reset();
    }
    return succeeded;
}

// Appends the children "Behavior" of `owner` to `behaviors`. Each gets an entry, which keeps what could be read; false
// when one has no name or an attribute without a key. Other children are passed over.
bool ReadBehaviors(const XMLDOMNodeAString& owner, BasicArray<StorageScene2::Behavior>& behaviors);

}  // namespace ZEMA

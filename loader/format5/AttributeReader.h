// The values that format-5 elements carry in their attributes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "core/BasicArray.h"
#include "core/BasicMap.h"
#include "core/RefPointer.h"
#include "core/String.h"
#include "scene/Vector3.h"
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

// Lists are numbers separated by commas. Between two commas, and before one at the start, stands an unreadable number;
// behind one at the end stands nothing.
std::size_t CountListPieces(std::string_view list);

// Fills the empty `numbers` with those of a list, and 0 for each that cannot be read, and the answer is false then. An
// absent or empty attribute adds nothing; any other puts `leadingZeros` zeros in front.
bool ReadNumberList(const XMLDOMNodeAString& node, std::string_view name, std::size_t leadingZeros,
                    BasicArray<unsigned long>& numbers);

// The object that a number stands for, or null.
template <class T>
T* Find(const BasicMap<unsigned long, T*>& objects, std::uint32_t refID) {
    const auto position = objects.Find(refID);
    return position == objects.end() ? nullptr : position->second;
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
                       BasicArray<RefPointer<T>>& references) {
    const AString* list = node.FindAttribute(name);
    if (list == nullptr) return true;
    references.Reserve(references.Size() + CountListPieces(list->View()));
    bool complete = true;
    ForEachPiece(list->View(), ',', [&](std::string_view piece) {
        std::uint32_t refID = 0;
        references.PushBack(ScanUnsigned(piece, refID) ? Find(objects, refID) : nullptr);
        if (!references.Back()) complete = false;
    });
    return complete;
}

}  // namespace ZEMA

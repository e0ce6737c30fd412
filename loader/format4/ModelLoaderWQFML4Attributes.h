// The values that format-4 elements carry in their attributes. For the sources of that loader only.
#pragma once

#include <cstdint>
#include <string_view>

#include "core/String.h"
#include "scene/Matrix4.h"
#include "scene/Vector3.h"

namespace ZEMA::WQFML4 {

// What an identifier is that the document does not give. A written one that reads as this number counts as not given.
inline constexpr std::uint32_t kAbsent = 0xFFFFFFFF;

struct Attribute {
    std::string_view name;
    const char* value;  // zero-terminated

    std::uint32_t UInt32() const;  // decimal; no digits give 0, too large and negative values 4294967295
    float Float() const;
    String Text() const;   // UTF-8
    String Ascii() const;  // empty when it holds any other byte
};

// The attributes of one start tag, in document order. Good while its start handler runs.
class Attributes {
public:
    class Position {
    public:
        explicit Position(const char** entry) : entry_(entry) {}
        Attribute operator*() const { return {entry_[0], entry_[1]}; }
        Position& operator++() {
            entry_ += 2;
            return *this;
        }
        bool operator!=(std::nullptr_t) const { return *entry_ != nullptr; }

    private:
        const char** entry_;
    };

    // `entries` alternates names and values and ends with null.
    explicit Attributes(const char** entries) : entries_(entries) {}

    Position begin() const { return Position(entries_); }
    std::nullptr_t end() const { return nullptr; }

private:
    const char** entries_;
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

}  // namespace ZEMA::WQFML4

// The orders that the ordered containers use.
#pragma once

#include <compare>
#include <type_traits>
#include <typeinfo>

namespace ZEMA {

// `operator<` of T; for String that is the exact order of UTF-16 units. Pointers are ordered even where `<` promises
// nothing, because they point into different objects.
template <class T>
struct Less {
    bool operator()(const T& a, const T& b) const {
        if constexpr (std::is_pointer_v<T>) {
            return std::compare_three_way()(a, b) < 0;
        } else {
            return a < b;
        }
    }
};

// String::LessNoCase: texts that differ only in case are one key.
template <class T>
struct StringCaseInsensitiveLess {
    bool operator()(const T& a, const T& b) const { return a.LessNoCase(b); }
};

// Orders types by the address of their name. Fixed within a process, but by nothing across builds: whoever needs types
// in a stated order must state it elsewhere.
struct TypeInfoLess {
    bool operator()(const std::type_info* a, const std::type_info* b) const {
        return Less<const char*>()(a->name(), b->name());
    }
};

}  // namespace ZEMA

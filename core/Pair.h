// Two values side by side.
#pragma once

namespace ZEMA {

template <class A, class B>
struct Pair {
    A first;
    B second;
};

template <class A, class B>
Pair(A, B) -> Pair<A, B>;

}  // namespace ZEMA

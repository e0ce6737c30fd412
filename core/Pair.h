// Two values side by side.
#pragma once

namespace ZEMA {

// A name with its value, a start handler with its end handler. No order and no equality: nobody compares them.
template <class A, class B>
struct Pair {
    A first;
    B second;
};

template <class A, class B>
Pair(A, B) -> Pair<A, B>;

}  // namespace ZEMA

// Makes the text of a model that looks like those of collectors, of any size.
#pragma once

#include <string>

namespace bench {

// Both have some 200 designs and 30 materials and a building step for every ten parts. The same count gives the same
// text.

// Markup format 5 with as many bricks: one part and one bone each, and a rigid body for every four bones.
std::string ModelTextOfFormat5(int brickCount);
// Markup format 4 with as many parts, in groups of four: every tenth group is one assembly, every tenth one flexible
// element, and a hinge joins every tenth to the next.
std::string ModelTextOfFormat4(int partCount);

}  // namespace bench

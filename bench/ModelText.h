// Makes the text of a model that looks like those of collectors, of any size.
#pragma once

#include <string>

namespace bench {

// Markup format 5 with as many bricks: one part and one bone each, some 200 designs and 30 materials, a rigid body for
// every four bones, and a building step for every ten parts. The same count gives the same text.
std::string ModelText(int brickCount);

}  // namespace bench

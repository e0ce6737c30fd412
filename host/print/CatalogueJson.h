// The design catalogue as JSON.
#pragma once

#include "host/print/JsonWriter.h"

namespace ZEMA {

// Writes the tables in force as one object: what replaces retired designs, the design that is split, and the
// corrections of placements. Angles are radians.
void WriteCatalogue(JsonWriter& json);

}  // namespace ZEMA

// Documents whose archives must be repaired to be read.
#pragma once

#include "host/documents/DocumentRecord.h"

namespace ZEMA {

// As ImportDocument; but where that fails because the archive is not as it must be, the model is read as a repair would
// write it, by the program's own libraries, and the record is marked as repaired. Nothing is written.
//
// PrepareRepair comes first, once, before workers start: they can load nothing any more.
void PrepareRepair();
DocumentRecord ImportRepaired(const PluginHost& host, const FoundDocument& document);

}  // namespace ZEMA

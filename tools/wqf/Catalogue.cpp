// wqf catalogue: what is known of individual brick designs.

#include "host/print/CatalogueJson.h"
#include "host/system/Output.h"
#include "tools/wqf/Commands.h"

namespace ZEMA {

int RunCatalogue() {
    Output output;
    JsonWriter json([&output](std::string_view piece) { return output.Write(piece); });
    WriteCatalogue(json);
    json.Finish();
    return ExitStatusOf(output);
}

}  // namespace ZEMA

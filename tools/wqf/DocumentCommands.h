// The commands over documents: what each is asked for, and the function that does it and returns the exit status.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/documents/DocumentRecord.h"
#include "importer/DocumentLoad.h"
#include "tools/wqf/DocumentRun.h"

namespace ZEMA {

// wqf import: prints the attributes that the plug-in imports.
struct ImportOptions {
    std::string bundle;  // empty: where it is built or installed
    RecordFormat format = RecordFormat::Text;
    std::vector<std::string> names;  // of the attributes to be printed; none: all
    std::string where;               // a query that tells which documents are printed; empty: all
    bool repair = false;             // also reads what only a repair makes readable
    DocumentPaths documents;
    RunOptions run;
};
int RunImport(const ImportOptions& options);

// wqf check: prints whether documents load, and what is wrong with them.
struct CheckOptions {
    std::uint32_t loaderOptions = kImportOptions;
    RecordFormat format = RecordFormat::Text;  // any but a property list
    DocumentPaths documents;
    RunOptions run;
};
int RunCheck(const CheckOptions& options);

// wqf scene: prints the model in one document.
struct SceneOptions {
    std::uint32_t loaderOptions = kImportOptions;
    std::string path;
};
int RunScene(const SceneOptions& options);

// wqf catalogue: prints what is known of individual brick designs.
int RunCatalogue();

}  // namespace ZEMA

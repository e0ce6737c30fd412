// The commands over the index: what each is asked for, and the function that does it and returns the exit status.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "host/documents/DocumentRecord.h"
#include "host/index/IndexSearch.h"
#include "tools/wqf/DocumentRun.h"

namespace ZEMA {

// wqf index: brings the index up to date with folders, or forgets some.
struct IndexOptions {
    std::string index;   // its file; empty: the user's
    std::string bundle;  // empty: where it is built or installed
    bool rebuild = false;
    bool forget = false;
    RunOptions run;
    std::vector<std::string> folders;
};
int RunIndex(const IndexOptions& options);

// wqf search: prints the documents in the index that a query finds.
struct SearchOptions {
    std::string index;
    RecordFormat format = RecordFormat::Text;  // any but a property list
    bool count = false;                        // only how many there are
    HitOrder order = HitOrder::Relevance;
    std::optional<std::size_t> limit;  // how many are printed at most
    std::string query;
};
int RunSearch(const SearchOptions& options);

}  // namespace ZEMA

// Where in a text the words of a query stand.
#pragma once

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "host/search/Query.h"

namespace ZEMA {

// From the first byte to the one behind the last.
using TextRange = std::pair<std::size_t, std::size_t>;

// The words of a query that make a document a hit, to be found again in its texts.
class Matches {
public:
    explicit Matches(const Query& query);

    // What to show of a text that stands in this field, in order and without overlaps.
    std::vector<TextRange> In(TextField field, std::string_view utf8) const;

private:
    void Collect(const Query& query);

    std::vector<WordsCondition> conditions_;
};

}  // namespace ZEMA

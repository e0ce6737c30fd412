#include "loader/format4/IndexBudget.h"

namespace ZEMA {

const char* IndexLimitExceeded::what() const noexcept {
    return "indices in the document ask for more entries than its size allows";
}

void IndexBudget::Take(std::uint64_t count) {
    if (count > left_) throw IndexLimitExceeded();
    left_ -= count;
}

}  // namespace ZEMA

#include "core/Exception.h"

namespace ZEMA {

Exception::~Exception() = default;
RangeException::~RangeException() = default;

void RangeException::Throw() {
    static RangeException* const instance = new RangeException;
    throw instance;
}

}  // namespace ZEMA

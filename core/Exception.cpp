#include "core/Exception.h"

namespace ZEMA {

Exception::~Exception() = default;
RangeException::~RangeException() = default;

void RangeException::Throw() {
    // Never freed: whoever catches the pointer may look at it until the very end.
    static RangeException* const instance = new RangeException;
    throw instance;
}

}  // namespace ZEMA

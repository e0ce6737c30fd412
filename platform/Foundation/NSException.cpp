#include "platform/Foundation/NSException.h"

#include <utility>

namespace Foundation {

NSException::NSException(const char* name, std::string reason) : name_(name), reason_(std::move(reason)) {}

// Out of line, so that the type information stands once, in this library.
NSException::~NSException() = default;

}  // namespace Foundation

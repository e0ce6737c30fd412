// The exception that file handles raise.
#pragma once

#include <exception>
#include <string>

#include "platform/Foundation/NSObjCRuntime.h"

namespace Foundation {

// The name of what a file handle raises.
inline constexpr const char* NSFileHandleOperationException = "NSFileHandleOperationException";

// Thrown by value and caught by reference; the name tells the kind, the reason is for people.
class FOUNDATION_EXPORT NSException : public std::exception {
public:
    // `name` is one of the constant names above.
    NSException(const char* name, std::string reason);
    ~NSException() override;

    const char* name() const { return name_; }
    const std::string& reason() const { return reason_; }
    const char* what() const noexcept override { return reason_.c_str(); }

private:
    const char* name_;
    std::string reason_;
};

}  // namespace Foundation

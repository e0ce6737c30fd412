// The exceptions of the system: there is one, for a text whose length no longer fits in 32 bits.
#pragma once

#include <cstdint>

namespace ZEMA {

// The root of what this system throws besides allocation failure. Thrown as a pointer, never by value.
class Exception {
public:
    virtual ~Exception();
    Exception(const Exception&) = delete;
    Exception& operator=(const Exception&) = delete;

protected:
    explicit Exception(std::uint32_t code) : code_(code) {}

    const std::uint32_t code_;  // which condition it tells of
};

// Thrown as a pointer to the one process-wide instance: catch `RangeException*` (or `Exception*`) and never delete it.
class RangeException : public Exception {
public:
    ~RangeException() override;

    // The instance is made on first use, by whichever thread comes first, and never freed.
    [[noreturn]] static void Throw();

private:
    RangeException() : Exception(0) {}
};

}  // namespace ZEMA

// The owner of one reference to a CoreFoundation object.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <utility>

namespace Foundation {

// Holds one reference, or none, and releases it when it goes.
//
// `Ref` is the CoreFoundation pointer type, such as CFStringRef. Making one from a pointer takes over the reference
// that a "Create" or "Copy" call gave; Retain adds one of its own.
template <class Ref>
class CFPointer {
public:
    CFPointer() = default;
    explicit CFPointer(Ref owned) : object_(owned) {}
    CFPointer(const CFPointer& other) : CFPointer(Retain(other.object_)) {}
    CFPointer(CFPointer&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    CFPointer& operator=(CFPointer other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~CFPointer() {
        if (object_ != nullptr) CFRelease(object_);
    }

    static CFPointer Retain(Ref object) {
        if (object != nullptr) CFRetain(object);
        return CFPointer(object);
    }

    Ref Get() const { return object_; }
    // Hands the reference over to the caller.
    [[nodiscard]] Ref Take() { return std::exchange(object_, nullptr); }
    explicit operator bool() const { return object_ != nullptr; }

private:
    Ref object_ = nullptr;
};

}  // namespace Foundation

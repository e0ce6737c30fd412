// Holds a platform object that the code at hand has to release.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <utility>

namespace ZEMA {

// Owns one reference to a platform object (T is its reference type, such as CFStringRef), or none. For the results of
// calls with "Create" or "Copy" in their names, so that they are released however the scope ends.
template <class T>
class CFOwner {
public:
    explicit CFOwner(T object = nullptr) : object_(object) {}
    CFOwner(CFOwner&& other) noexcept : object_(other.Take()) {}
    CFOwner(const CFOwner&) = delete;
    CFOwner& operator=(const CFOwner&) = delete;
    ~CFOwner() {
        if (object_ != nullptr) CFRelease(object_);
    }

    T Get() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

    // Hands the reference over to the caller.
    T Take() { return std::exchange(object_, nullptr); }

private:
    T object_;
};

}  // namespace ZEMA

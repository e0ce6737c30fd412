// Reads the units of a platform string one after the other.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>

namespace ZEMA {

// Copies the units out of the string in runs, since a call for each unit is slow. The string outlives the window and
// does not change meanwhile.
class UnitWindow {
public:
    explicit UnitWindow(CFStringRef text) : text_(text), length_(CFStringGetLength(text)) {}

    // The unit at `index`, which is inside the text. Going forward is cheap, going back reads a run anew.
    UniChar operator[](CFIndex index) {
        if (index < start_ || index - start_ >= count_) ReadRun(index);
        return units_[index - start_];
    }

private:
    static constexpr CFIndex kRunLength = 64;

    void ReadRun(CFIndex index) {
        start_ = index;
        count_ = std::min(kRunLength, length_ - index);
        CFStringGetCharacters(text_, CFRangeMake(start_, count_), units_);
    }

    CFStringRef text_;
    CFIndex length_;
    CFIndex start_ = 0;  // of the run that `units_` holds
    CFIndex count_ = 0;
    UniChar units_[kRunLength];
};

}  // namespace ZEMA

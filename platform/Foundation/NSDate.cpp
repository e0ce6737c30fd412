#include "platform/Foundation/NSDate.h"

#include <algorithm>
#include <cmath>

namespace Foundation {

NSDate NSDate::dateWithTimespec(const std::timespec& time) {
    // The whole seconds first: they are exact, and the smaller the number, the more of the fraction it keeps.
    return NSDate(static_cast<double>(time.tv_sec) - kBetween1970And2001 + static_cast<double>(time.tv_nsec) * 1e-9);
}

std::timespec NSDate::timespec() const {
    constexpr double kLimit = 4e18;  // well inside what time_t holds
    constexpr long kMicrosecondsPerSecond = 1'000'000;
    const double finite = std::isnan(sinceReferenceDate_) ? 0 : std::clamp(sinceReferenceDate_, -kLimit, kLimit);
    const double whole = std::floor(finite);
    long microseconds = std::lround((finite - whole) * kMicrosecondsPerSecond);
    auto seconds = static_cast<std::time_t>(whole) + static_cast<std::time_t>(kBetween1970And2001);
    if (microseconds == kMicrosecondsPerSecond) {
        microseconds = 0;
        ++seconds;
    }
    return {seconds, microseconds * 1000};
}

}  // namespace Foundation

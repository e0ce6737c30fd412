#include "platform/Foundation/NSDate.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Foundation {
namespace {

// Whether the system's broken-down time can hold the number after `origin` has been taken away.
bool Fits(NSInteger number, NSInteger origin) {
    return number >= std::numeric_limits<int>::min() + origin && number <= std::numeric_limits<int>::max();
}

}  // namespace

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

std::optional<NSDate> NSCalendar::dateFromComponents(const NSDateComponents& components) const {
    constexpr NSInteger kFirstYear = 1900;  // of struct tm
    if (!Fits(components.year(), kFirstYear) || !Fits(components.month(), 1) || !Fits(components.day(), 0)) return {};
    std::tm start = {};
    start.tm_year = static_cast<int>(components.year() - kFirstYear);
    start.tm_mon = static_cast<int>(components.month() - 1);
    start.tm_mday = static_cast<int>(components.day());
    start.tm_isdst = -1;
    start.tm_wday = -1;  // filled in on success only; the result alone cannot tell -1 from the second before 1970
    const std::time_t seconds = std::mktime(&start);
    if (start.tm_wday == -1) return {};
    return NSDate::dateWithTimespec({seconds, 0});
}

}  // namespace Foundation

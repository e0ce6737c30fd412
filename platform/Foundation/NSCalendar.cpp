#include "platform/Foundation/NSCalendar.h"

#include <ctime>
#include <limits>

namespace Foundation {
namespace {

// Whether the system's broken-down time can hold the number after `origin` has been taken away.
bool Fits(NSInteger number, NSInteger origin) {
    return number >= std::numeric_limits<int>::min() + origin && number <= std::numeric_limits<int>::max();
}

}  // namespace

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

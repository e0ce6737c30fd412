// Dates from years, months and days.
#pragma once

#include <optional>

#include "platform/Foundation/NSDate.h"

namespace Foundation {

// A day of a calendar; 1 is the first day, the first month.
class FOUNDATION_EXPORT NSDateComponents {
public:
    void setDay(NSInteger day) { day_ = day; }
    void setMonth(NSInteger month) { month_ = month; }
    void setYear(NSInteger year) { year_ = year; }

    NSInteger day() const { return day_; }
    NSInteger month() const { return month_; }
    NSInteger year() const { return year_; }

private:
    NSInteger day_ = 1;
    NSInteger month_ = 1;
    NSInteger year_ = 1;
};

enum class NSCalendarIdentifier { NSGregorianCalendar };
using enum NSCalendarIdentifier;

// The Gregorian calendar, reckoned by its rules also before its introduction, in the default time zone of the process.
class FOUNDATION_EXPORT NSCalendar {
public:
    explicit NSCalendar(NSCalendarIdentifier) {}

    // The start of the day in the default time zone; before a zone's first standard time that is its local mean time.
    // None for a year that the system's time functions cannot hold.
    std::optional<NSDate> dateFromComponents(const NSDateComponents& components) const;
};

}  // namespace Foundation

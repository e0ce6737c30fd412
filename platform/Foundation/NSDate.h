// Points in time, and days of a calendar.
#pragma once

#include <ctime>
#include <optional>

#include "platform/Foundation/NSObjCRuntime.h"

namespace Foundation {

// A point in time as seconds since 2001-01-01 00:00 UTC in a double: about a tenth of a microsecond fine in this
// century, two microseconds when measured from 1601.
class FOUNDATION_EXPORT NSDate {
public:
    explicit NSDate(NSTimeInterval sinceReferenceDate) : sinceReferenceDate_(sinceReferenceDate) {}
    NSDate(NSTimeInterval interval, const NSDate& since) : NSDate(interval + since.sinceReferenceDate_) {}

    static NSDate dateWithTimespec(const std::timespec& time);

    NSTimeInterval timeIntervalSinceDate(const NSDate& other) const {
        return sinceReferenceDate_ - other.sinceReferenceDate_;
    }
    NSTimeInterval timeIntervalSince1970() const { return sinceReferenceDate_ + kBetween1970And2001; }

    // Rounded to the microsecond, which is as fine as dates are stored with files.
    std::timespec timespec() const;

private:
    static constexpr NSTimeInterval kBetween1970And2001 = 978307200;

    NSTimeInterval sinceReferenceDate_;
};

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

// The calendars that there are.
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

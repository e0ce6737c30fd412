// Points in time.
#pragma once

#include <ctime>

#include "platform/Foundation/NSObjCRuntime.h"

namespace Foundation {

// A point in time as seconds since 2001-01-01 00:00 UTC in a double: about a tenth of a microsecond fine in this
// century, two microseconds when measured from 1601.
class FOUNDATION_EXPORT NSDate {
public:
    explicit NSDate(NSTimeInterval sinceReferenceDate) : sinceReferenceDate_(sinceReferenceDate) {}
    NSDate(NSTimeInterval interval, const NSDate& since) : NSDate(interval + since.sinceReferenceDate_) {}

    static NSDate dateWithTimespec(const std::timespec& time);

    NSTimeInterval timeIntervalSinceReferenceDate() const { return sinceReferenceDate_; }
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

}  // namespace Foundation

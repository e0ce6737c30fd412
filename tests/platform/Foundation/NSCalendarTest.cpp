#include "platform/Foundation/NSCalendar.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <limits>

namespace Foundation {
namespace {

double StartOf(NSInteger year, NSInteger month, NSInteger day) {
    NSDateComponents components;
    components.setYear(year);
    components.setMonth(month);
    components.setDay(day);
    return NSCalendar(NSGregorianCalendar).dateFromComponents(components).value().timeIntervalSince1970();
}

TEST(NSCalendar, StartsADayInTheDefaultTimeZone) {
    const struct {
        const char* zone;
        double start1601;  // by the zone's local mean time
        double start2024;  // by its standard time, on 10 January
    } rows[] = {
        {"UTC", -11644473600, 1704844800},
        {"Europe/Berlin", -11644476808, 1704841200},
        {"America/New_York", -11644455838, 1704862800},
        {"Asia/Tokyo", -11644507139, 1704812400},
        {"America/Los_Angeles", -11644445222, 1704873600},
    };
    const char* const zone = getenv("TZ");
    const std::string before = zone == nullptr ? "" : zone;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.zone);
        setenv("TZ", row.zone, 1);
        EXPECT_EQ(StartOf(1601, 1, 1), row.start1601);
        EXPECT_EQ(StartOf(2024, 1, 10), row.start2024);
    }
    setenv("TZ", "UTC", 1);
    EXPECT_EQ(StartOf(1970, 1, 1) - StartOf(1969, 12, 31), 86400) << "one of them is the system's word for failure";
    zone == nullptr ? unsetenv("TZ") : setenv("TZ", before.c_str(), 1);

    NSDateComponents components;
    components.setYear(std::numeric_limits<NSInteger>::max());
    EXPECT_FALSE(NSCalendar(NSGregorianCalendar).dateFromComponents(components));
}

TEST(NSDate, KeepsMicroseconds) {
    const struct {
        const char* what;
        std::timespec time;
        long nanoseconds;
        std::time_t seconds;
    } rows[] = {
        {"this century", {1700000000, 123456000}, 123456000, 1700000000},
        {"rounded up into the next second", {1700000000, 999999600}, 0, 1700000001},
        {"before 1970", {-2, 250000000}, 250000000, -2},
        {"1601", {-11644473600, 0}, 0, -11644473600},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const std::timespec time = NSDate::dateWithTimespec(row.time).timespec();
        EXPECT_EQ(time.tv_sec, row.seconds);
        EXPECT_EQ(time.tv_nsec, row.nanoseconds);
    }
}

}  // namespace
}  // namespace Foundation

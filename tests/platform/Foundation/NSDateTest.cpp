#include "platform/Foundation/NSDate.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <limits>
#include <tuple>
#include <utility>

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
    // 1601 by the zone's local mean time, 10 January 2024 by its standard time, 10 July by summer time.
    const std::tuple<const char*, double, double, double> rows[] = {
        {"Europe/Berlin", -11644476808, 1704841200, 1720562400},
        {"America/Los_Angeles", -11644445222, 1704873600, 1720594800},
        {"UTC", -11644473600, 1704844800, 1720569600},
    };
    for (const auto& [zone, start1601, start2024, summer2024] : rows) {
        setenv("TZ", zone, 1);
        EXPECT_EQ(StartOf(1601, 1, 1), start1601) << zone;
        EXPECT_EQ(StartOf(2024, 1, 10), start2024) << zone;
        EXPECT_EQ(StartOf(2024, 7, 10), summer2024) << zone;
    }
    EXPECT_EQ(StartOf(1970, 1, 1) - StartOf(1969, 12, 31), 86400) << "one of them is the system's word for failure";
    unsetenv("TZ");

    NSDateComponents components;
    components.setYear(std::numeric_limits<NSInteger>::max());
    EXPECT_FALSE(NSCalendar(NSGregorianCalendar).dateFromComponents(components));
}

TEST(NSDate, KeepsMicroseconds) {
    const auto kept = [](std::timespec time) {
        const std::timespec again = NSDate::dateWithTimespec(time).timespec();
        return std::pair(again.tv_sec, again.tv_nsec);
    };
    EXPECT_EQ(kept({1'700'000'000, 123'456'000}), std::pair(1'700'000'000l, 123'456'000l));
    EXPECT_EQ(kept({1'700'000'000, 999'999'600}), std::pair(1'700'000'001l, 0l)) << "rounded into the next second";
    EXPECT_EQ(kept({-2, 250'000'000}), std::pair(-2l, 250'000'000l)) << "before 1970";
}

}  // namespace
}  // namespace Foundation

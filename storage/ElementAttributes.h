// What is known of a storage element besides its contents: flags, times, and how it is opened.
#pragma once

#include <cstdint>

#include "core/BasicSet.h"
#include "core/String.h"

namespace ZEMA {

// The attributes of an element, one byte. Bits 6 and 7 mean nothing and are kept wherever the flags are rebuilt.
struct ElementFlags {
    static constexpr std::uint8_t kDirectory = 0x01;
    static constexpr std::uint8_t kReadable = 0x02;
    static constexpr std::uint8_t kWritable = 0x04;         // the contents may be changed
    static constexpr std::uint8_t kEntriesWritable = 0x08;  // of a directory: entries may be made or removed in it
    static constexpr std::uint8_t kHidden = 0x10;
    static constexpr std::uint8_t kExecutable = 0x20;

    std::uint8_t bits = 0;

    bool Has(std::uint8_t mask) const { return (bits & mask) != 0; }
    bool IsDirectory() const { return Has(kDirectory); }
    void Set(std::uint8_t mask, bool on) { bits = static_cast<std::uint8_t>(on ? bits | mask : bits & ~mask); }

    friend bool operator==(const ElementFlags&, const ElementFlags&) = default;
};

// Each counts 100-nanosecond ticks since 1601-01-01 00:00 in the Gregorian calendar; 0 is an unknown time.
struct ElementTimes {
    std::uint64_t created = 0;
    std::uint64_t modified = 0;
    std::uint64_t accessed = 0;

    friend bool operator==(const ElementTimes&, const ElementTimes&) = default;
};

// How a file is opened. The share bits say what other openers of the same file may do meanwhile.
struct AccessStyle {
    std::uint8_t read : 1 = 0;
    std::uint8_t write : 1 = 0;
    std::uint8_t shareRead : 1 = 0;
    std::uint8_t shareWrite : 1 = 0;
};

inline constexpr AccessStyle kReadStyle{1, 0, 1, 0};       // reads, lets others read
inline constexpr AccessStyle kReadWriteStyle{1, 1, 0, 0};  // reads and writes, alone
inline constexpr AccessStyle kReadWriteShareReadStyle{1, 1, 1, 0};

// One entry of a listing. Ordered by name, ignoring case: names that differ only in case are one entry.
struct Descriptor {
    String name;
    ElementFlags flags;
    ElementTimes times;
    std::uint64_t size = 0;  // bytes; 0 for directories

    friend bool operator<(const Descriptor& a, const Descriptor& b) { return a.name.LessNoCase(b.name); }
};

using Listing = BasicSet<Descriptor, Less<Descriptor>>;

}  // namespace ZEMA

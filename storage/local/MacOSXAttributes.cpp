#include "storage/local/MacOSXAttributes.h"

#include <sys/stat.h>

#include <cstdint>
#include <limits>
#include <optional>

#include "platform/Foundation/NSDate.h"
#include "platform/Foundation/NSFileManager.h"
#include "platform/Foundation/NSPathUtilities.h"

namespace ZEMA {
namespace {

using Foundation::NSDate;
using Foundation::NSFileAttributes;
using Foundation::NSFileManager;

constexpr std::uint32_t kOwnerPermissions = 0700;
constexpr std::uint32_t kOwnerRead = 0400;
constexpr std::uint32_t kOwnerWrite = 0200;
constexpr std::uint32_t kOwnerExecute = 0100;

constexpr std::uint8_t kMeaninglessFlags = 0xC0;  // kept by whoever rebuilds the others

constexpr double kTicksPerSecond = 1e7;

// The beginning of time for ElementTimes, in the default time zone.
NSDate ReferenceDate() {
    Foundation::NSDateComponents components;
    components.setDay(1);
    components.setMonth(1);
    components.setYear(1601);
    return *Foundation::NSCalendar(Foundation::NSGregorianCalendar).dateFromComponents(components);
}

// Unknown and earlier dates are 0; dates too late for 64 bits are the last tick.
std::uint64_t TicksOf(const std::optional<NSDate>& date, const NSDate& reference) {
    constexpr double kTooLarge = 18446744073709551616.0;  // 2^64
    const double ticks = date ? date->timeIntervalSinceDate(reference) * kTicksPerSecond : 0;
    if (!(ticks > 0)) return 0;
    return ticks < kTooLarge ? static_cast<std::uint64_t>(ticks) : std::numeric_limits<std::uint64_t>::max();
}

NSDate DateOf(std::uint64_t ticks, const NSDate& reference) {
    return NSDate(static_cast<double>(ticks) / kTicksPerSecond, reference);
}

void SetPermissionFlags(const NSFileAttributes& attributes, ElementFlags* flags) {
    const std::uint32_t permissions = attributes.filePosixPermissions.value_or(0);
    flags->Set(ElementFlags::kReadable, (permissions & kOwnerRead) != 0);
    flags->Set(ElementFlags::kWritable | ElementFlags::kEntriesWritable, (permissions & kOwnerWrite) != 0);
    flags->Set(ElementFlags::kExecutable, (permissions & kOwnerExecute) != 0);
}

// Those that a change meets: it goes through links, whose own permissions let everybody do everything.
std::optional<std::uint32_t> PermissionsBehind(CFStringRef path) {
    const std::optional<std::string> name = Foundation::FileSystemRepresentation(path);
    struct stat status = {};
    if (!name || stat(name->c_str(), &status) != 0) return {};
    return Foundation::FileAttributesOf(status).filePosixPermissions;
}

ElementTimes TimesOf(const NSFileAttributes& attributes) {
    const NSDate reference = ReferenceDate();
    ElementTimes times;
    times.created = TicksOf(attributes.fileCreationDate, reference);
    times.modified = TicksOf(attributes.fileModificationDate, reference);
    times.accessed = times.modified;
    return times;
}

// Both looks at an item that flags need: one through links, one at the item itself.
struct Item {
    explicit Item(CFStringRef path)
        : exists(NSFileManager::defaultManager().fileExistsAtPath(path, &isDirectory)),
          attributes(NSFileManager::defaultManager().attributesOfItemAtPath(path)) {}

    bool ReadFlagsInto(ElementFlags* flags) const {
        if (!exists) return false;
        flags->bits &= kMeaninglessFlags;
        flags->Set(ElementFlags::kDirectory, isDirectory);
        if (attributes) SetPermissionFlags(*attributes, flags);
        return attributes.has_value();
    }

    bool isDirectory = false;
    bool exists;
    std::optional<NSFileAttributes> attributes;
};

}  // namespace

bool ReadFlags(CFStringRef path, ElementFlags* flags) {
    return Item(path).ReadFlagsInto(flags);
}

bool WriteFlags(CFStringRef path, const ElementFlags& flags) {
    const std::optional<std::uint32_t> present = PermissionsBehind(path);
    if (!present) return false;
    std::uint32_t permissions = *present & ~kOwnerPermissions;
    const bool entriesWritable = flags.IsDirectory() && flags.Has(ElementFlags::kEntriesWritable);
    if (flags.Has(ElementFlags::kReadable)) permissions |= kOwnerRead;
    if (flags.Has(ElementFlags::kWritable) || entriesWritable) permissions |= kOwnerWrite;
    if (flags.IsDirectory() || flags.Has(ElementFlags::kExecutable)) permissions |= kOwnerExecute;
    NSFileAttributes changed;
    changed.filePosixPermissions = permissions;
    return NSFileManager::defaultManager().setAttributes(changed, path);
}

bool ReadTimes(CFStringRef path, ElementTimes* times) {
    const std::optional<NSFileAttributes> attributes = NSFileManager::defaultManager().attributesOfItemAtPath(path);
    if (!attributes) return false;
    *times = TimesOf(*attributes);
    return true;
}

bool WriteTimes(CFStringRef path, const ElementTimes& times) {
    const NSDate reference = ReferenceDate();
    NSFileAttributes changed;
    changed.fileCreationDate = DateOf(times.created, reference);
    changed.fileModificationDate = DateOf(times.modified, reference);
    return NSFileManager::defaultManager().setAttributes(changed, path);
}

Descriptor DescribeItem(CFStringRef path, const String& name) {
    const Item item(path);
    Descriptor descriptor;
    descriptor.name = name;
    item.ReadFlagsInto(&descriptor.flags);
    if (!item.attributes) return descriptor;
    descriptor.times = TimesOf(*item.attributes);
    if (!item.isDirectory) descriptor.size = item.attributes->fileSize.value_or(0);
    return descriptor;
}

}  // namespace ZEMA

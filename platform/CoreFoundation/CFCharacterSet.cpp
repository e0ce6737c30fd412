#include <CoreFoundation/CFCharacterSet.h>

#include "platform/CoreFoundation/CharacterSetObject.h"
#include "platform/CoreFoundation/StringObject.h"

namespace ZEMA::CF {
namespace {

void AddMembers(TextView members, __CFCharacterSet& set) {
    for (std::size_t position = 0; position < members.Length(); ++position) {
        const UniChar unit = members[position];
        const bool hasNext = position + 1 < members.Length();
        if (unit < set.ascii.size()) {
            set.ascii.set(unit);
        } else if (IsHighSurrogate(unit) && hasNext && IsLowSurrogate(members[position + 1])) {
            set.others.push_back(PairToCodePoint(unit, members[++position]));
        } else if (!IsHighSurrogate(unit) && !IsLowSurrogate(unit)) {
            set.others.push_back(unit);
        }
    }
    std::ranges::sort(set.others);
}

void Destroy(const Object* object) noexcept {
    delete static_cast<const __CFCharacterSet*>(object);
}

}  // namespace

const Class kCharacterSetClass = {Destroy, nullptr, nullptr};

}  // namespace ZEMA::CF

using namespace ZEMA::CF;

CFCharacterSetRef CFCharacterSetCreateWithCharactersInString(CFAllocatorRef, CFStringRef members) {
    auto set = std::make_unique<__CFCharacterSet>();
    AddMembers(ViewOf(members), *set);
    return set.release();
}

// Sets of characters.
#pragma once

#include <CoreFoundation/CFString.h>

CF_EXTERN_C_BEGIN

// Members are whole characters: the two halves of a pair in `members` stand for one, a lone half for none.
CF_EXPORT CFCharacterSetRef CFCharacterSetCreateWithCharactersInString(CFAllocatorRef allocator, CFStringRef members);

CF_EXTERN_C_END

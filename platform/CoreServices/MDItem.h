// Keys of metadata attributes. The text of each is its own name.
#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

CF_EXPORT const CFStringRef kMDItemAuthors;
CF_EXPORT const CFStringRef kMDItemCreator;
CF_EXPORT const CFStringRef kMDItemDescription;
CF_EXPORT const CFStringRef kMDItemKeywords;
CF_EXPORT const CFStringRef kMDItemVersion;

CF_EXTERN_C_END

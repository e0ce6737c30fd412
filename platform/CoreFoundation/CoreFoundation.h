// The calls of CoreFoundation that this program makes, under the framework's own names.
//
// On Apple's systems the real framework takes the place of these headers. What a call does is what the framework does;
// the comments here only say what a caller could guess wrong. Where the framework's behaviour depends on settings of
// the user or the process (locale, home folder), these calls behave as in the root locale.
#pragma once

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFCharacterSet.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFNumberFormatter.h>
#include <CoreFoundation/CFPlugIn.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFUUID.h>

// The "C" locale, for reading numbers whatever locale the host has set.
#pragma once

#include <clocale>
#if defined(__APPLE__)
#include <xlocale.h>
#endif

namespace ZEMA {

// Made on first use and never freed.
locale_t CLocale();

}  // namespace ZEMA

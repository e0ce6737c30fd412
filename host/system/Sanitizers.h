// Whether the program was built with a sanitizer that lives beside it.
#pragma once

namespace ZEMA {

// They reserve address space by the terabyte, and write their reports to standard error.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kUnderSanitizers = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
inline constexpr bool kUnderSanitizers = true;
#else
inline constexpr bool kUnderSanitizers = false;
#endif
#else
inline constexpr bool kUnderSanitizers = false;
#endif

}  // namespace ZEMA

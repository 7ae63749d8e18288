#ifndef TUL_TEST_SANITIZERS_H
#define TUL_TEST_SANITIZERS_H

/** True in a program that is built with a sanitizer that has a heap of its own. */
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
inline constexpr bool hasSanitizer = true;
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer) || __has_feature(address_sanitizer)
inline constexpr bool hasSanitizer = true;
#else
inline constexpr bool hasSanitizer = false;
#endif
#else
inline constexpr bool hasSanitizer = false;
#endif

#endif

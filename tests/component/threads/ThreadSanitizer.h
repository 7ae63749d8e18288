#ifndef TUL_TEST_THREAD_SANITIZER_H
#define TUL_TEST_THREAD_SANITIZER_H

/** True in a program that is built with the thread sanitizer. */
#if defined(__SANITIZE_THREAD__)
inline constexpr bool hasThreadSanitizer = true;
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
inline constexpr bool hasThreadSanitizer = true;
#else
inline constexpr bool hasThreadSanitizer = false;
#endif
#else
inline constexpr bool hasThreadSanitizer = false;
#endif

#endif

#ifndef TUL_TEST_SANITIZERS_H
#define TUL_TEST_SANITIZERS_H

namespace TulTest {

#if defined(__has_feature)
#define TUL_TEST_HAS_FEATURE(name) __has_feature(name)
#else
#define TUL_TEST_HAS_FEATURE(name) 0
#endif

/** True in a program that is built with the thread sanitizer. */
#if defined(__SANITIZE_THREAD__) || TUL_TEST_HAS_FEATURE(thread_sanitizer)
inline constexpr bool hasThreadSanitizer = true;
#else
inline constexpr bool hasThreadSanitizer = false;
#endif

/** True in a program that is built with a sanitizer that has a heap of its own. */
#if defined(__SANITIZE_ADDRESS__) || TUL_TEST_HAS_FEATURE(address_sanitizer)
inline constexpr bool hasSanitizer = true;
#else
inline constexpr bool hasSanitizer = hasThreadSanitizer;
#endif

}  // namespace TulTest

#endif

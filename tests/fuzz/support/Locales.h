#ifndef TUL_FUZZ_LOCALES_H
#define TUL_FUZZ_LOCALES_H

#include <locale>
#include <vector>

namespace TulFuzz {

/** The locales that are installed, those in the folder LOCPATH, and two that no country has. */
std::vector<std::locale> everyLocale();

}  // namespace TulFuzz

#endif

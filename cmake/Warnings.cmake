# The one list of warnings. Every target of ours links tul_warnings.
add_library(tul_warnings INTERFACE)
target_compile_options(tul_warnings INTERFACE
  -Wall -Wextra -Wpedantic
  -Wcast-qual               # a const that is cast away is a promise broken
  -Wconversion              # numbers cross a C boundary here: no silent narrowing
  -Wformat=2                # formats are checked, also those handed on
  -Wshadow                  # a hidden member or variable is misread
  -Wundef
  $<$<COMPILE_LANGUAGE:CXX>:-Wextra-semi -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual>
  # g++ 12 sees overlapping copies in its own std::string (its bug 105651); clang has no such warning
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
option(TUL_WERROR "Treat warnings as errors" ON)
if(TUL_WERROR)
  target_compile_options(tul_warnings INTERFACE -Werror)
endif()

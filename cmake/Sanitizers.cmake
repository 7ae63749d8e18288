# TUL_SANITIZE: empty, "address,undefined" or "thread".
set(TUL_SANITIZE "" CACHE STRING "Sanitizers to build everything with")
if(TUL_SANITIZE)
  add_compile_options(-fsanitize=${TUL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  # g++ 12 takes the instrumented std::function of its own library for uninitialised.
  add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  add_link_options(-fsanitize=${TUL_SANITIZE})
endif()

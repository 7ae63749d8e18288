# TUL_SANITIZE: empty, "address,undefined" or "thread".
set(TUL_SANITIZE "" CACHE STRING "Sanitizers to build everything with")
if(TUL_SANITIZE)
  add_compile_options(-fsanitize=${TUL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TUL_SANITIZE})
endif()

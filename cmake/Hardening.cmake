# What a library that lives in somebody else's process owes its host.
add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
option(TUL_HARDEN "Stack protector and checked library calls" OFF)
if(TUL_HARDEN)
  add_compile_options(-fstack-protector-strong -D_FORTIFY_SOURCE=2)
endif()

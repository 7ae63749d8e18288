# What a library that lives in somebody else's process owes its host. tests/abi checks it on all that is shipped.
add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
option(TUL_HARDEN "Stack protector, probed large frames and checked library calls" OFF)
if(TUL_HARDEN)
  # 3 also checks buffers whose size is known at run time only; it needs g++ 12 or clang 9.
  add_compile_options(-fstack-protector-strong -fstack-clash-protection -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3)
endif()

# Source-based coverage with conditions and decisions (MC/DC). Counted are the regions of the source text: the edges
# that a compiler makes by itself, such as those of exceptions that pass through, are not regions.
option(TUL_COVERAGE "Count what the tests reach, for tests/coverage/run" OFF)
if(TUL_COVERAGE)
  add_compile_options(-fprofile-instr-generate -fcoverage-mapping -fcoverage-mcdc)
  add_link_options(-fprofile-instr-generate)
endif()

# Assertions guard the consumers' single slots and must stop a release build too, so NDEBUG is never defined.
# CMake's own flags for these build types add it.
foreach(type RELEASE RELWITHDEBINFO MINSIZEREL)
  foreach(language C CXX)
    string(REPLACE "-DNDEBUG" "" CMAKE_${language}_FLAGS_${type} "${CMAKE_${language}_FLAGS_${type}}")
  endforeach()
endforeach()

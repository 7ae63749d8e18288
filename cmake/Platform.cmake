# Where the SPI headers and libtul_common come from: a platform SDK, or the development edition in this tree.
# An SDK has the headers in include/ and the library in lib/.
set(TUL_PLATFORM_SDK "" CACHE PATH "Folder of a platform SDK; empty: build the development edition")
if(TUL_PLATFORM_SDK)
  add_library(tul_spi INTERFACE)
  target_include_directories(tul_spi SYSTEM INTERFACE ${TUL_PLATFORM_SDK}/include)
  find_library(TUL_COMMON_LIBRARY tul_common PATHS ${TUL_PLATFORM_SDK}/lib NO_DEFAULT_PATH REQUIRED)
  add_library(tul_common SHARED IMPORTED GLOBAL)
  set_target_properties(tul_common PROPERTIES IMPORTED_LOCATION ${TUL_COMMON_LIBRARY})
  target_link_libraries(tul_common INTERFACE tul_spi)
else()
  add_subdirectory(platform)
endif()

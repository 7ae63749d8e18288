# Where the SPI headers and libtul_common come from: a platform SDK, or the development edition in this tree.
# An SDK has the headers in include/ and the library in lib/, or is the development edition installed elsewhere. It is
# a folder of this machine also when the target has a sysroot.
set(TUL_PLATFORM_SDK "" CACHE PATH "Folder of a platform SDK; empty: build the development edition")
# Nothing is remembered of a search: the folder may be named anew in the same build.
unset(tul-platform_DIR CACHE)
if(TUL_PLATFORM_SDK)
  find_package(tul-platform CONFIG PATHS ${TUL_PLATFORM_SDK} NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH QUIET)
endif()
if(tul-platform_FOUND)
  add_library(tul_spi ALIAS tul::tul_spi)
  add_library(tul_common ALIAS tul::tul_common)
  get_target_property(TUL_SPI_HEADERS tul::tul_spi INTERFACE_INCLUDE_DIRECTORIES)
elseif(tul-platform_CONSIDERED_VERSIONS)
  message(FATAL_ERROR "TUL_PLATFORM_SDK=${TUL_PLATFORM_SDK} has the platform ${tul-platform_CONSIDERED_VERSIONS}, built "
                      "for another word size than this target's")
elseif(TUL_PLATFORM_SDK)
  find_library(TUL_COMMON_LIBRARY tul_common PATHS ${TUL_PLATFORM_SDK}/lib NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH
               NO_CACHE)
  if(NOT TUL_COMMON_LIBRARY OR NOT EXISTS ${TUL_PLATFORM_SDK}/include)
    message(FATAL_ERROR "TUL_PLATFORM_SDK=${TUL_PLATFORM_SDK} is no platform SDK. It may be the prefix of an installed "
                        "tul-platform, or a folder with headers in include/ and libtul_common.so in lib/")
  endif()
  add_library(tul_spi INTERFACE)
  target_include_directories(tul_spi SYSTEM INTERFACE ${TUL_PLATFORM_SDK}/include)
  add_library(tul_common SHARED IMPORTED GLOBAL)
  set_target_properties(tul_common PROPERTIES IMPORTED_LOCATION ${TUL_COMMON_LIBRARY})
  target_link_libraries(tul_common INTERFACE tul_spi)
elseif(NOT EXISTS ${PROJECT_SOURCE_DIR}/platform)
  message(FATAL_ERROR "There is no platform/ in this tree, and TUL_PLATFORM_SDK names no other")
else()
  add_subdirectory(platform)
  set(TUL_SPI_HEADERS ${PROJECT_SOURCE_DIR}/platform/spi)
endif()

# 32-bit ARM with hardware floating point, as Debian's armhf: its cross compiler, and the sysroot of
# packaging/make-sysroot. Programs of the build's tests run under qemu-arm.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
# Nothing here meets code of g++ 6, whose passing of arguments is remarked upon without this.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
get_filename_component(CMAKE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/sysroot-armhf REALPATH)
if(NOT EXISTS ${CMAKE_SYSROOT}/.complete)
  message(FATAL_ERROR "There is no sysroot in ${CMAKE_SYSROOT}; packaging/make-sysroot armhf build/sysroot-armhf makes it")
endif()
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L ${CMAKE_SYSROOT})
# With -L a program that opens "/" sees the sysroot there. For those that look at the machine's files from the root down.
set(TUL_PLAIN_EMULATOR qemu-arm ${CMAKE_SYSROOT}/lib/ld-linux-armhf.so.3 --library-path
    ${CMAKE_SYSROOT}/lib/${CMAKE_LIBRARY_ARCHITECTURE}:${CMAKE_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE})
set(CMAKE_FIND_ROOT_PATH ${CMAKE_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

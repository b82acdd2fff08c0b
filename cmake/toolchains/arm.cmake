# What the ARM toolchains share. They set, before including this file:
#   micro800_triple    the compiler's prefix and Debian's name of the library folder
#
# Of the caller:
#   MICRO800_SYSROOT (cache or environment)    folder with the panel's headers and libraries: one that
#       scripts/panel made, or a panel SDK's. With the panel's Qt 4 it may be left out when the compiler
#       brings its own.
#   MICRO800_CROSS_PREFIX                      replaces the compiler's prefix, for an SDK that has a C++17
#       compiler of its own

include("${CMAKE_CURRENT_LIST_DIR}/sysroot_headers.cmake")

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

# A relative folder is one of where cmake was called. Of an option, CMake itself makes an absolute one here; the
# small projects of compiler checks get that.
if(NOT MICRO800_SYSROOT AND NOT "$ENV{MICRO800_SYSROOT}" STREQUAL "")
  get_filename_component(MICRO800_SYSROOT "$ENV{MICRO800_SYSROOT}" ABSOLUTE BASE_DIR "$ENV{PWD}")
endif()
set(MICRO800_SYSROOT "${MICRO800_SYSROOT}" CACHE PATH "Folder with the panel's headers and libraries")
if(MICRO800_SYSROOT AND NOT IS_DIRECTORY "${MICRO800_SYSROOT}")
  message(FATAL_ERROR "MICRO800_SYSROOT is no folder: ${MICRO800_SYSROOT}")
elseif(NOT MICRO800_SYSROOT AND NOT MICRO800_QT4)
  message(FATAL_ERROR "MICRO800_SYSROOT has to name the panel's headers and libraries (scripts/panel makes them)")
endif()
if(NOT MICRO800_CROSS_PREFIX)
  set(MICRO800_CROSS_PREFIX "${micro800_triple}-")
endif()
# Compiler checks configure small projects of their own; they need the same answers.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES MICRO800_SYSROOT MICRO800_CROSS_PREFIX MICRO800_QT4)

set(CMAKE_CXX_COMPILER "${MICRO800_CROSS_PREFIX}g++")
# Notes on calls between compilers older and newer than GCC 7: all of the C++ here comes from one.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
set(CMAKE_STRIP "${MICRO800_CROSS_PREFIX}strip")
set(CMAKE_READELF "${MICRO800_CROSS_PREFIX}readelf")
set(CMAKE_LIBRARY_ARCHITECTURE "${micro800_triple}")

if(MICRO800_SYSROOT)
  set(CMAKE_SYSROOT "${MICRO800_SYSROOT}")
  set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
  set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
  set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
  set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

  # A compiler that brings a C library of its own looks there first, and the result would need that one. So
  # the sysroot's libraries come before it; but what belongs to the compiler is taken from the compiler.
  execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=libstdc++.a
                  OUTPUT_VARIABLE micro800_libstdcxx OUTPUT_STRIP_TRAILING_WHITESPACE)
  get_filename_component(micro800_link_folders "${micro800_libstdcxx}" DIRECTORY)
  foreach(folder usr/lib/${micro800_triple} lib/${micro800_triple} usr/lib lib)
    if(IS_DIRECTORY "${MICRO800_SYSROOT}/${folder}")
      list(APPEND micro800_link_folders "${MICRO800_SYSROOT}/${folder}")
    endif()
  endforeach()
  list(TRANSFORM micro800_link_folders REPLACE "(.+)" "-L\"\\1\"")
  list(JOIN micro800_link_folders " " micro800_link_flags)
  foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "${micro800_link_flags}")
  endforeach()
  micro800_sysroot_headers("${CMAKE_CXX_COMPILER}" "${MICRO800_SYSROOT}" micro800_header_flags)
  string(APPEND CMAKE_CXX_FLAGS_INIT "${micro800_header_flags}")
endif()
if(MICRO800_QT4)
  # A panel's qmake names folders of this machine in one SDK, folders below the sysroot in another.
  set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY BOTH)
  set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE BOTH)
endif()

# Tests run on the building machine; without the emulator they are built all the same.
find_program(MICRO800_QEMU_ARM NAMES qemu-arm-static)
if(MICRO800_QEMU_ARM AND MICRO800_SYSROOT)
  set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../../scripts/emulated;${MICRO800_SYSROOT}")
endif()

# Options and compiler flags that apply to every target of the project.

option(MICRO800_HOST_PROGRAMS "Build the command-line host and the simulated controller (Qt 5)" ON)
option(MICRO800_BENCH "Build the benchmarks (needs Google Benchmark)" OFF)
option(MICRO800_FUZZ "Build the fuzzers (needs clang)" OFF)
set(MICRO800_SANITIZE "" CACHE STRING "Sanitizers to build with: empty, 'address,undefined' or 'thread'")

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
if(EXISTS /etc/debian_version AND CMAKE_LIBRARY_ARCHITECTURE)
  # Debian's place for what is of one processor. CMake would take it only for a prefix of /usr.
  set(CMAKE_INSTALL_LIBDIR "lib/${CMAKE_LIBRARY_ARCHITECTURE}" CACHE PATH "Folder for libraries below the prefix")
endif()

add_compile_options(-Wall -Wextra -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  # The host's command record has virtual operations and, by its binary contract, no virtual
  # destructor; every QList of it would warn.
  add_compile_options(-Wno-delete-non-abstract-non-virtual-dtor)
endif()
include_directories("${PROJECT_SOURCE_DIR}")

find_package(Threads REQUIRED)

if(MICRO800_SANITIZE)
  add_compile_options(-fsanitize=${MICRO800_SANITIZE} -fno-omit-frame-pointer
                      -fno-sanitize-recover=all -g1)
  add_link_options(-fsanitize=${MICRO800_SANITIZE})
endif()

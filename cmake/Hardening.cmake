# What the compiler and the linker have against errors that an attacker would use: in builds that are handed out,
# as far as the toolchain has it. The sanitizers bring their own, and find more.
#
# For a panel all of it is in GLIBC_2.4, or in packaging/panel/old_libc.cpp.

if(MICRO800_SANITIZE OR NOT CMAKE_BUILD_TYPE STREQUAL "Release")
  return()
endif()

include(CheckCXXSourceCompiles)
include(CheckPIESupported)

# Programs at addresses of the system's choice. (The plugin, as a shared object, is so anyway.)
check_pie_supported(LANGUAGES CXX)

# micro800_harden(NAME OPTION...): takes the compiler options when a program with them links.
function(micro800_harden name)
  list(JOIN ARGN " " CMAKE_REQUIRED_FLAGS)
  string(PREPEND CMAKE_REQUIRED_FLAGS "-O2 -Werror ")
  check_cxx_source_compiles("
    #include <string.h>
    int main(int count, char** words) { char copy[64]; strcpy(copy, words[count - 1]); return copy[0]; }" ${name})
  if(${name})
    add_compile_options(${ARGN})
  endif()
endfunction()

# Buffers on the stack have a mark after them; calls whose buffer has a known size check it.
micro800_harden(MICRO800_STACK_PROTECTOR -fstack-protector-strong)
micro800_harden(MICRO800_FORTIFY -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)

# The tables of the linker are read-only before the first instruction runs.
add_link_options(LINKER:-z,relro,-z,now)

# How the plugin is linked for a panel. A panel's C++ library is older than the compiler or not there at
# all, so the plugin brings its own, hidden behind its version script.

option(MICRO800_STATIC_RUNTIME "Link libstdc++ and libgcc into the plugin" ${CMAKE_CROSSCOMPILING})

if(MICRO800_STATIC_RUNTIME)
  # What the panel's libraries lack is to be told here, not by the panel's loader.
  target_link_options(ab_micro800_ethernet PRIVATE
    -static-libstdc++ -static-libgcc LINKER:--exclude-libs,ALL LINKER:--as-needed LINKER:-z,defs)
endif()

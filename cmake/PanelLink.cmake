# How the plugin is linked for a panel. A panel's C++ library is older than the compiler or not there at
# all, so the plugin brings its own, hidden by its version script.

option(MICRO800_STATIC_RUNTIME "Link libstdc++ and libgcc into the plugin" ${CMAKE_CROSSCOMPILING})

if(MICRO800_STATIC_RUNTIME)
  target_sources(ab_micro800_ethernet PRIVATE "${PROJECT_SOURCE_DIR}/packaging/panel/old_libc.cpp")
  # What the panel's libraries lack is to be told here, not by the panel's loader. A loader before 2.5 finds
  # symbols by the older of the two tables only.
  target_link_options(ab_micro800_ethernet PRIVATE
    -static-libstdc++ -static-libgcc LINKER:--as-needed LINKER:-z,defs LINKER:--hash-style=both)
  # The SDK's folders mean nothing on the panel.
  set_target_properties(ab_micro800_ethernet PROPERTIES SKIP_BUILD_RPATH ON)
endif()

if(MICRO800_STATIC_RUNTIME AND MICRO800_SYSROOT AND NOT MICRO800_QT4
   AND CMAKE_LIBRARY_ARCHITECTURE STREQUAL "arm-linux-gnueabi")
  add_subdirectory(packaging/panel/old-libc)
endif()

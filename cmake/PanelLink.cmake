# How the plugin is linked for a panel. A panel's C++ library is older than the compiler or not there at
# all, so the plugin brings its own, hidden behind its version script.

option(MICRO800_STATIC_RUNTIME "Link libstdc++ and libgcc into the plugin" ${CMAKE_CROSSCOMPILING})

if(MICRO800_STATIC_RUNTIME)
  target_sources(ab_micro800_ethernet PRIVATE "${PROJECT_SOURCE_DIR}/packaging/panel/old_libc.cpp")
  # What the panel's libraries lack is to be told here, not by the panel's loader. C libraries before 2.17
  # have their clocks in librt.
  target_link_options(ab_micro800_ethernet PRIVATE
    -static-libstdc++ -static-libgcc LINKER:--as-needed LINKER:-z,defs)
  target_link_libraries(ab_micro800_ethernet PRIVATE rt)
  # The SDK's folders mean nothing on the panel.
  set_target_properties(ab_micro800_ethernet PROPERTIES SKIP_BUILD_RPATH ON)
endif()

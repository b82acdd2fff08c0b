# The CIP client as a library to install: libmicro800-cip.a with headers, a CMake package and a pkg-config file.
# docs/cip-client.md shows how to use it.
#
# Static only: the interface is C++ and follows the driver, so a program takes the client that it was built with.
# The library contains the object files of the plugin. It needs Qt core and threads.

if(CMAKE_CROSSCOMPILING OR MICRO800_QT4 OR MICRO800_SANITIZE OR NOT MICRO800_HOST_PROGRAMS)
  return()
endif()

include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# Of `eip` the two transports, of `common` what they call.
add_library(micro800_cip STATIC
  $<TARGET_OBJECTS:cip>
  $<TARGET_OBJECTS:record>
  "$<FILTER:$<TARGET_OBJECTS:eip>,INCLUDE,/(cip_tcp_callback[a-z_]*|cip_direct_callback|socket_tools)[.]cpp[.]o$>"
  "$<FILTER:$<TARGET_OBJECTS:common>,INCLUDE,/(clock|process)[.]cpp[.]o$>")
set_target_properties(micro800_cip PROPERTIES OUTPUT_NAME micro800-cip EXPORT_NAME cip LINKER_LANGUAGE CXX)
set(client_headers "${CMAKE_INSTALL_INCLUDEDIR}/micro800")
target_include_directories(micro800_cip INTERFACE "$<INSTALL_INTERFACE:${client_headers}>")
target_compile_features(micro800_cip INTERFACE cxx_std_17)
target_link_libraries(micro800_cip INTERFACE Qt5::Core Threads::Threads rt)

install(TARGETS micro800_cip EXPORT micro800-cip COMPONENT client
        ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
file(GLOB cip_headers RELATIVE "${PROJECT_SOURCE_DIR}" CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/eip/cip/*.h")
list(FILTER cip_headers EXCLUDE REGEX
     "/(connection_path|cpf_view|logix_tag_replies|mr_view|session_header|status_masks|text_table|wire)\\.h$")
install(FILES ${cip_headers} DESTINATION "${client_headers}/eip/cip" COMPONENT client)
install(FILES eip/byte_stream_device.h eip/cip_direct_callback.h eip/cip_tcp_callback.h
        DESTINATION "${client_headers}/eip" COMPONENT client)

set(client_package "${CMAKE_INSTALL_LIBDIR}/cmake/micro800-cip")
install(EXPORT micro800-cip NAMESPACE micro800:: FILE micro800-cip-targets.cmake
        DESTINATION "${client_package}" COMPONENT client)
configure_package_config_file(packaging/client/micro800-cip-config.cmake.in
  "${PROJECT_BINARY_DIR}/client/micro800-cip-config.cmake" INSTALL_DESTINATION "${client_package}")
# 1.1 may add to 1.0; a new major number may take away.
write_basic_package_version_file("${PROJECT_BINARY_DIR}/client/micro800-cip-config-version.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/client/micro800-cip-config.cmake"
              "${PROJECT_BINARY_DIR}/client/micro800-cip-config-version.cmake"
        DESTINATION "${client_package}" COMPONENT client)

# The file finds its prefix from its own folder, so the installed tree can be moved.
file(RELATIVE_PATH client_prefix "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" client_prefix "${client_prefix}")
configure_file(packaging/client/micro800-cip.pc.in "${PROJECT_BINARY_DIR}/client/micro800-cip.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/client/micro800-cip.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
        COMPONENT client)

set(client_documents "${CMAKE_INSTALL_DATAROOTDIR}/doc/libmicro800-cip-dev")
install(FILES packaging/deb/copyright DESTINATION "${client_documents}" COMPONENT client)
install(FILES docs/examples/read_tag.cpp docs/examples/CMakeLists.txt DESTINATION "${client_documents}/examples"
        COMPONENT client)

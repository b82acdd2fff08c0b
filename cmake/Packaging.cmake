# What `cmake --install` installs, and the packages that cpack makes from it: for the panel an archive with the
# plugin, for a workstation a Debian package with the programs and one with the client library.

include(GNUInstallDirs)
set(documents "${CMAKE_INSTALL_DATAROOTDIR}/doc/micro800")

set(CPACK_PACKAGE_NAME micro800)
set(CPACK_PACKAGE_VENDOR "Micro800 driver")
set(CPACK_PACKAGE_CONTACT "Micro800 driver maintainers <micro800-driver@localhost>")
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/packaging/permissions.cmake")
set(CPACK_VERBATIM_VARIABLES ON)

if(CMAKE_CROSSCOMPILING OR MICRO800_QT4)
  set(qt_generation qt5)
  if(MICRO800_QT4)
    set(qt_generation qt4)
  endif()
  install(TARGETS ab_micro800_ethernet LIBRARY DESTINATION drivers)
  install(FILES packaging/panel/README.txt CHANGELOG.md DESTINATION .)
  install(DIRECTORY docs DESTINATION . PATTERN examples EXCLUDE)
  install(FILES packaging/panel/LINKED-IN.txt DESTINATION licenses)
  # What Debian ships about the compiler whose libraries were linked in.
  file(GLOB gcc_copyright "/usr/share/doc/gcc-*-${CMAKE_LIBRARY_ARCHITECTURE}-base/copyright")
  if(gcc_copyright)
    list(GET gcc_copyright 0 gcc_copyright)
    install(FILES "${gcc_copyright}" DESTINATION licenses RENAME gcc-copyright.txt)
  endif()
  # Last: sums of what is really there, stripped or not.
  install(CODE "
    file(GLOB_RECURSE files RELATIVE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}\" \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/drivers/*.so\")
    set(sums)
    foreach(file IN LISTS files)
      file(SHA256 \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/\${file}\" sum)
      string(APPEND sums \"\${sum}  \${file}\\n\")
    endforeach()
    file(WRITE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/SHA256SUMS\" \"\${sums}\")
    file(CHMOD \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/SHA256SUMS\"
         FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)")
  set(CPACK_GENERATOR TGZ)
  set(CPACK_PACKAGE_FILE_NAME
      "micro800-driver-${PROJECT_VERSION}-${CMAKE_LIBRARY_ARCHITECTURE}-${qt_generation}")
elseif(MICRO800_HOST_PROGRAMS AND NOT MICRO800_SANITIZE)
  install(TARGETS micro800 micro800-sim RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT programs)
  install(TARGETS ab_micro800_ethernet LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}/micro800"
          COMPONENT programs)
  install(FILES README.md SECURITY.md CHANGELOG.md packaging/deb/copyright DESTINATION "${documents}"
          COMPONENT programs)
  install(FILES CONTRIBUTING.md DESTINATION "${documents}" COMPONENT programs)
  install(DIRECTORY docs DESTINATION "${documents}" COMPONENT programs)
  install(FILES apps/simulator/README.md DESTINATION "${documents}/apps/simulator" COMPONENT programs)

  # Manual pages are what the programs themselves say with --help. They and the changes, in Debian's form, are
  # packed, as Debian's packages have them.
  set(made "${PROJECT_BINARY_DIR}/documents")
  set(man_pages "${PROJECT_SOURCE_DIR}/packaging/man-pages")
  add_custom_command(OUTPUT "${made}/made"
    COMMAND "${CMAKE_COMMAND}" -E rm -rf "${made}"
    COMMAND "${man_pages}" "$<TARGET_FILE:micro800>" "${PROJECT_VERSION}" "${made}/man1"
    COMMAND "${man_pages}" "$<TARGET_FILE:micro800-sim>" "${PROJECT_VERSION}" "${made}/man1"
    COMMAND "${CMAKE_COMMAND}" -E copy "${PROJECT_SOURCE_DIR}/packaging/deb/changelog" "${made}/changelog"
    COMMAND gzip -9nr "${made}"
    COMMAND "${CMAKE_COMMAND}" -E touch "${made}/made"
    DEPENDS micro800 micro800-sim "${man_pages}" "${PROJECT_SOURCE_DIR}/packaging/deb/changelog"
    COMMENT "Writing the manual pages" VERBATIM)
  add_custom_target(documents ALL DEPENDS "${made}/made")
  install(DIRECTORY "${made}/man1" DESTINATION "${CMAKE_INSTALL_MANDIR}" COMPONENT programs)
  install(FILES "${made}/changelog.gz" DESTINATION "${documents}" COMPONENT programs)
  install(FILES "${made}/changelog.gz" DESTINATION "${client_documents}" COMPONENT client)

  set(completions "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
  install(FILES packaging/completion/micro800 DESTINATION "${completions}" COMPONENT programs)
  install(FILES packaging/completion/micro800 DESTINATION "${completions}" RENAME micro800-sim
          COMPONENT programs)

  set(CPACK_GENERATOR DEB)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_DEB_COMPONENT_INSTALL ON)
  set(CPACK_COMPONENTS_ALL programs client)
  # Each component has a summary of its own, the first line of its description.
  set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PROGRAMS_PACKAGE_NAME micro800)
  set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SECTION utils)
  set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SHLIBDEPS ON)
  # Loaded by name at run time, where no tool sees it.
  set(CPACK_DEBIAN_PROGRAMS_PACKAGE_DEPENDS libqt5sql5-sqlite)
  set(CPACK_DEBIAN_PROGRAMS_DESCRIPTION
"command-line host and simulator for Micro800 controllers
Reads and writes the tags of an Allen-Bradley Micro800 controller over
EtherNet/IP, through the same plugin file that operator panels load, and
simulates a controller for trials.")
  set(CPACK_DEBIAN_CLIENT_PACKAGE_NAME libmicro800-cip-dev)
  set(CPACK_DEBIAN_CLIENT_PACKAGE_SECTION libdevel)
  set(CPACK_DEBIAN_CLIENT_PACKAGE_DEPENDS qtbase5-dev)
  set(CPACK_DEBIAN_CLIENT_DESCRIPTION
"EtherNet/IP and CIP client library, development files
Static library, headers, CMake package and pkg-config file of the client
that the Micro800 driver uses: sessions, connections, tags, PCCC.")
else()
  return()
endif()

include(CPack)

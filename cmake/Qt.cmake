# The Qt the project is built on, under the same names for both generations:
#   micro800::qt_core, micro800::qt_sql      product and host
# Qt 4 (a panel's SDK) is taken when MICRO800_QT4 is on, Qt 5 otherwise.

option(MICRO800_QT4 "Build the plugin against a Qt 4.7 SDK (QT_QMAKE_EXECUTABLE names its qmake)" OFF)

set(CMAKE_AUTOMOC OFF)  # switched on by the targets that hold Qt classes

add_library(micro800_qt_core INTERFACE)
add_library(micro800_qt_sql INTERFACE)
add_library(micro800::qt_core ALIAS micro800_qt_core)
add_library(micro800::qt_sql ALIAS micro800_qt_sql)

if(MICRO800_QT4)
  if(NOT QT_QMAKE_EXECUTABLE)
    message(FATAL_ERROR "QT_QMAKE_EXECUTABLE has to name the qmake of the panel's SDK")
  endif()
  # CMake's search demands rcc, which not every SDK has and nothing here calls.
  find_package(Qt4 4.7 QUIET COMPONENTS QtCore QtSql)
  if(NOT QT_RCC_EXECUTABLE)
    set(QT_RCC_EXECUTABLE "${CMAKE_COMMAND}" CACHE FILEPATH "Never called" FORCE)
  endif()
  find_package(Qt4 4.7 REQUIRED COMPONENTS QtCore QtSql)
  target_link_libraries(micro800_qt_core INTERFACE Qt4::QtCore)
  target_link_libraries(micro800_qt_sql INTERFACE Qt4::QtSql Qt4::QtCore)
else()
  if(CMAKE_CROSSCOMPILING)
    # The sysroot brings a moc for its own processor; the building machine's writes the same code.
    find_program(MICRO800_HOST_MOC NAMES moc PATHS /usr/lib/qt5/bin NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    add_executable(Qt5::moc IMPORTED)
    set_target_properties(Qt5::moc PROPERTIES IMPORTED_LOCATION "${MICRO800_HOST_MOC}")
  endif()
  find_package(Qt5 5.15 REQUIRED COMPONENTS Core Sql)
  target_link_libraries(micro800_qt_core INTERFACE Qt5::Core)
  target_link_libraries(micro800_qt_sql INTERFACE Qt5::Sql Qt5::Core)
endif()

# The stand-alone host layer, installed. Another host offers the same by a file of this name that defines targets of the
# same names for its own headers and libraries.
include(CMakeFindDependencyMacro)
find_dependency(Qt5 5.15 COMPONENTS Widgets Qml)
include("${CMAKE_CURRENT_LIST_DIR}/DFLocateHost.cmake")

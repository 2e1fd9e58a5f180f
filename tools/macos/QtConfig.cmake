# QtCore for the macOS cross build: this machine's headers and meta-object compiler, and a stub of the library.
# tools/check-macos.sh links it as Qt5Config.cmake and as Qt6Config.cmake.

set(qt ${CMAKE_FIND_PACKAGE_NAME})
if(TARGET ${qt}::Core) # found before
    return()
endif()

find_program(MOC moc HINTS ${ORV_QT_PROGRAMS} REQUIRED NO_DEFAULT_PATH)
add_executable(${qt}::moc IMPORTED)
set_target_properties(${qt}::moc PROPERTIES IMPORTED_LOCATION ${MOC})
set(Qt5Core_MOC_EXECUTABLE Qt5::moc)
set(Qt5Core_VERSION_MAJOR 5)
set(Qt5Core_VERSION_MINOR 15)
set(QT_CMAKE_EXPORT_NAMESPACE ${qt}) # read by Qt 6's macros
include(${ORV_QT_CMAKE}/${qt}Core/${qt}CoreMacros.cmake)

add_library(${qt}::Core SHARED IMPORTED)
set_target_properties(${qt}::Core PROPERTIES
    IMPORTED_LOCATION ${ORV_MAC_WORK}/lib/QtCore.tbd
    INTERFACE_COMPILE_DEFINITIONS QT_CORE_LIB
    INTERFACE_INCLUDE_DIRECTORIES "${ORV_QT_INCLUDE};${ORV_QT_INCLUDE}/QtCore")

# QtCore as a Mac would have it: this machine's headers and meta-object compiler, and the stub of the library.

if(TARGET Qt5::Core) # found before
    return()
endif()

find_program(MOC moc HINTS ${ORV_QT_BINARIES} REQUIRED)
add_executable(Qt5::moc IMPORTED)
set_target_properties(Qt5::moc PROPERTIES IMPORTED_LOCATION ${MOC})
set(Qt5Core_MOC_EXECUTABLE Qt5::moc)
set(Qt5Core_VERSION_MAJOR 5)
set(Qt5Core_VERSION_MINOR 15)
include(${ORV_QT_CMAKE}/Qt5CoreMacros.cmake)

add_library(Qt5::Core SHARED IMPORTED)
set_target_properties(Qt5::Core PROPERTIES
    IMPORTED_LOCATION ${ORV_MAC_WORK}/lib/QtCore.tbd
    INTERFACE_COMPILE_DEFINITIONS QT_CORE_LIB
    INTERFACE_INCLUDE_DIRECTORIES "${ORV_QT_INCLUDE};${ORV_QT_INCLUDE}/QtCore")

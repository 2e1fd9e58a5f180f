# Debian packages: the runtime library, and the development files. Use the preset "packages": it installs to /usr, which
# also determines the library's directory.

get_target_property(abi orvCore SOVERSION)
string(TOLOWER ${ORV_NAME} package)
if(ORV_QT_MAJOR EQUAL 5)
    set(library_package lib${package}${abi})
    set(qt_package qtbase5-dev)
else()
    set(library_package lib${package}-${abi}) # the name ends with a digit
    set(qt_package qt6-base-dev)
endif()
set(development_package lib${package}-dev)
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${package})
set(CPACK_PACKAGE_VENDOR "orvCore developers")
set(CPACK_PACKAGE_CONTACT "orvCore developers <dev@orvcore.invalid>")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # it would precede the descriptions of both packages
set(CPACK_COMPONENTS_ALL library development)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_VERSION ${PROJECT_VERSION}-1)

set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
    "${PROJECT_DESCRIPTION}, with Qt ${ORV_QT_MAJOR}\nLogging, encryption, a hash tree, file-system helpers, encodings\nand text utilities.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
# Computed from the linked libraries. Before 1.0, a program needs the exact version that it was built with.
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")

set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "${PROJECT_DESCRIPTION}, with Qt ${ORV_QT_MAJOR} (development)\nHeaders, CMake package and pkg-config file.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${development_package})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${library_package} (= ${CPACK_DEBIAN_PACKAGE_VERSION}), ${qt_package} (>= ${ORV_QT_VERSION})")

# Files that Debian requires in every package
set(directory ${CMAKE_CURRENT_BINARY_DIR}/debian)
find_program(GZIP gzip REQUIRED)
foreach(component library development)
    string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC) # SOURCE_DATE_EPOCH, if set, for reproducible builds
    configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/changelog.in ${directory}/${component}/changelog.Debian @ONLY)
    execute_process(COMMAND ${GZIP} -9nf ${directory}/${component}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)
    install(FILES ${CMAKE_CURRENT_LIST_DIR}/debian/copyright ${directory}/${component}/changelog.Debian.gz
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${${component}_package} COMPONENT ${component})
endforeach()
file(WRITE ${directory}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${directory}/triggers)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian/NoMaintainerScripts.cmake)

include(CPack)

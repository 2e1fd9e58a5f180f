# Debian packages: the library for programs that are linked to it, and what building one needs. The preset "packages"
# installs to /usr, which also decides the folder of the library.

get_target_property(abi orvCore SOVERSION)
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvcore)
set(CPACK_PACKAGE_VENDOR "orvCore developers")
set(CPACK_PACKAGE_CONTACT "orvCore developers <dev@orvcore.invalid>")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # it would stand before those of the two packages
set(CPACK_COMPONENTS_ALL library development)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_VERSION ${PROJECT_VERSION}-1)

set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
    "${PROJECT_DESCRIPTION}\nLogging, encryption, a hash tree, files and the small forms that every module shares.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME liborvcore${abi})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
# From the libraries it is linked to. Before 1.0, a program fits only the version that it was built with.
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")

set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "${PROJECT_DESCRIPTION} (development)\nHeaders, CMake package and pkg-config file.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME liborvcore-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "liborvcore${abi} (= ${CPACK_DEBIAN_PACKAGE_VERSION}), qtbase5-dev (>= 5.15)")

include(CPack)

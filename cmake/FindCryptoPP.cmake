# Finds Crypto++ and defines CryptoPP::CryptoPP. Debian and Homebrew ship no CMake package for it.

find_path(CryptoPP_INCLUDE_DIR cryptopp/cryptlib.h)
find_library(CryptoPP_LIBRARY NAMES cryptopp)

if(CryptoPP_INCLUDE_DIR)
    # 8.7.0 is written as 870.
    set(_version_header ${CryptoPP_INCLUDE_DIR}/cryptopp/config_ver.h)
    if(EXISTS ${_version_header})
        file(STRINGS ${_version_header} _line REGEX "define CRYPTOPP_VERSION [0-9]+")
        string(REGEX REPLACE ".*CRYPTOPP_VERSION ([0-9])([0-9])([0-9]).*" "\\1.\\2.\\3" CryptoPP_VERSION "${_line}")
    endif()
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(CryptoPP REQUIRED_VARS CryptoPP_LIBRARY CryptoPP_INCLUDE_DIR
                                  VERSION_VAR CryptoPP_VERSION)

if(CryptoPP_FOUND AND NOT TARGET CryptoPP::CryptoPP)
    add_library(CryptoPP::CryptoPP UNKNOWN IMPORTED)
    set_target_properties(CryptoPP::CryptoPP PROPERTIES
        IMPORTED_LOCATION ${CryptoPP_LIBRARY}
        INTERFACE_INCLUDE_DIRECTORIES ${CryptoPP_INCLUDE_DIR})
endif()
mark_as_advanced(CryptoPP_INCLUDE_DIR CryptoPP_LIBRARY)

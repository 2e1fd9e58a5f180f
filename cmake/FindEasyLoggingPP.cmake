# Finds easylogging++, which comes as a header and a source to be compiled by its user, and defines
# EasyLoggingPP::Headers. The header's class layouts depend on macros, so everybody who includes it must link this
# target and get the same ones.

# Where tools/bootstrap.sh puts it on macOS.
set(_fetched ${CMAKE_CURRENT_LIST_DIR}/../build/easyloggingpp/src)
find_path(EasyLoggingPP_INCLUDE_DIR easylogging++.h HINTS ${_fetched})
find_file(EasyLoggingPP_SOURCE easylogging++.cc HINTS ${_fetched} PATHS ${EasyLoggingPP_INCLUDE_DIR} PATH_SUFFIXES include)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(EasyLoggingPP REQUIRED_VARS EasyLoggingPP_INCLUDE_DIR EasyLoggingPP_SOURCE)

if(EasyLoggingPP_FOUND AND NOT TARGET EasyLoggingPP::Headers)
    add_library(EasyLoggingPP::Headers INTERFACE IMPORTED)
    target_include_directories(EasyLoggingPP::Headers SYSTEM INTERFACE ${EasyLoggingPP_INCLUDE_DIR})
    target_compile_definitions(EasyLoggingPP::Headers INTERFACE
        ELPP_THREAD_SAFE          # messages come from any thread
        ELPP_DEFAULT_LOG_FILE="/" # a directory: the back end opens no file, the library has its own
    )
endif()
mark_as_advanced(EasyLoggingPP_INCLUDE_DIR EasyLoggingPP_SOURCE)

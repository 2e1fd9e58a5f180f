# Finds easylogging++, which is distributed as a header and a source file to compile, and defines
# EasyLoggingPP::Headers. The header's class layouts depend on macros, so all code that includes it must link this
# target to get the same ones.

# tools/bootstrap.sh installs it here on macOS.
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
        ELPP_DEFAULT_LOG_FILE="/" # a directory, so that it opens no file: the library writes the files itself
    )
endif()
mark_as_advanced(EasyLoggingPP_INCLUDE_DIR EasyLoggingPP_SOURCE)

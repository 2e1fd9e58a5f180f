# Builds for macOS with Debian's clang and lld. tools/check-macos.sh sets ORV_MAC_PROCESSOR, and ORV_MAC_WORK: a
# directory with sysroot, include and lib.

set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_VERSION 21.0.0) # of macOS 12
set(CMAKE_SYSTEM_PROCESSOR ${ORV_MAC_PROCESSOR})
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ORV_MAC_PROCESSOR ORV_MAC_WORK)

set(CMAKE_OSX_SYSROOT ${ORV_MAC_WORK}/sysroot)
set(CMAKE_OSX_ARCHITECTURES ${ORV_MAC_PROCESSOR})
set(CMAKE_OSX_DEPLOYMENT_TARGET 12.0)
find_program(ORV_MAC_CLANG clang++ REQUIRED)
foreach(language CXX OBJCXX)
    set(CMAKE_${language}_COMPILER ${ORV_MAC_CLANG})
    set(CMAKE_${language}_COMPILER_TARGET ${ORV_MAC_PROCESSOR}-apple-macos12)
    set(CMAKE_${language}_FLAGS_INIT -stdlib=libc++)
endforeach()
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT -fuse-ld=lld)
endforeach()
find_program(CMAKE_INSTALL_NAME_TOOL NAMES llvm-install-name-tool llvm-install-name-tool-14)
find_program(CMAKE_OTOOL NAMES llvm-otool llvm-otool-14)

# Programs are found on this machine, headers and libraries only in ORV_MAC_WORK.
set(CMAKE_FIND_ROOT_PATH ${CMAKE_OSX_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(Qt5_DIR ${ORV_MAC_WORK}/lib)
set(Qt6_DIR ${ORV_MAC_WORK}/lib)
set(GTest_DIR ${CMAKE_CURRENT_LIST_DIR})
set(CryptoPP_INCLUDE_DIR ${ORV_MAC_WORK}/include)
set(CryptoPP_LIBRARY ${ORV_MAC_WORK}/lib/libcryptopp.tbd)
set(EasyLoggingPP_INCLUDE_DIR ${ORV_MAC_WORK}/include)
set(EasyLoggingPP_SOURCE /usr/include/easylogging++.cc)
set(CMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE PRE_TEST) # the tests cannot run here

# Compiler and linker options of all targets.

foreach(language CXX OBJCXX) # Objective-C++ on Apple systems only
    set(CMAKE_${language}_STANDARD 17)
    set(CMAKE_${language}_STANDARD_REQUIRED ON)
    set(CMAKE_${language}_EXTENSIONS OFF)
    set(CMAKE_${language}_VISIBILITY_PRESET hidden)
endforeach()
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
    set(CMAKE_OBJCXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

if(ORV_SANITIZE)
    add_compile_options(-fsanitize=${ORV_SANITIZE} -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${ORV_SANITIZE})
endif()

# Optimised builds are hardened like Debian's own packages; not with sanitizers, which have their own checks.
option(ORV_HARDEN "Harden optimised builds: stack, buffers, control flow, relocations" ON)
if(ORV_HARDEN AND NOT ORV_SANITIZE)
    set(hardening -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
    if(NOT APPLE)
        include(CheckCXXCompilerFlag)
        # Names of gcc and clang; the last two are for x86 and ARM processors.
        foreach(flag -fstack-clash-protection -fcf-protection -mbranch-protection=standard)
            string(MAKE_C_IDENTIFIER ORV_HAS${flag} has)
            check_cxx_compiler_flag(${flag} ${has})
            if(${has})
                list(APPEND hardening ${flag})
            endif()
        endforeach()
        add_link_options($<$<NOT:$<CONFIG:Debug>>:LINKER:-z,relro,-z,now>)
    endif()
    add_compile_options("$<$<NOT:$<CONFIG:Debug>>:${hardening}>")
endif()

# Enables warnings; not for third-party sources, which are compiled in targets of their own.
function(orv_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic $<$<BOOL:${ORV_WERROR}>:-Werror>)
endfunction()

# What every target of the project is compiled with.

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

# Warnings of our own code; third-party sources compiled into a target do not get them.
function(orv_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic $<$<BOOL:${ORV_WERROR}>:-Werror>)
endfunction()

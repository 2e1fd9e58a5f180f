# GoogleTest for the macOS cross build: this machine's headers and a stub of the libraries.

foreach(name gtest gtest_main gmock gmock_main)
    add_library(GTest::${name} SHARED IMPORTED)
    set_target_properties(GTest::${name} PROPERTIES
        IMPORTED_LOCATION ${ORV_MAC_WORK}/lib/gtest.tbd
        INTERFACE_INCLUDE_DIRECTORIES ${ORV_MAC_WORK}/include)
endforeach()

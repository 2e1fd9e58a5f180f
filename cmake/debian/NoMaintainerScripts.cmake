# CPack adds scripts that call ldconfig to packages with a shared library. The trigger does that once per installation.

foreach(package IN LISTS CPACK_PACKAGE_FILES)
    set(directory ${CPACK_TEMPORARY_DIRECTORY}/repacked)
    file(REMOVE_RECURSE ${directory})
    execute_process(COMMAND dpkg-deb --raw-extract ${package} ${directory} COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE ${directory}/DEBIAN/postinst ${directory}/DEBIAN/postrm)
    execute_process(COMMAND dpkg-deb --root-owner-group -Zxz --build ${directory} ${package}
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()

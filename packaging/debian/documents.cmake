# Run by CPack between the installation and the packing: makes of each package what only Debian asks for. gzip is told to
# note neither name nor time, so that the same files make the same package.
find_program(gzip gzip REQUIRED)
find_program(strip strip REQUIRED)

function(compress file)
    execute_process(COMMAND ${gzip} -9 --no-name --force ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

set(readable OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
set(enterable ${readable} OWNER_EXECUTE GROUP_EXECUTE WORLD_EXECUTE)

foreach(package IN LISTS CPACK_COMPONENTS_ALL)
    set(top ${CPACK_TEMPORARY_DIRECTORY}/${package}/usr)
    set(share ${top}/share)
    set(documents ${share}/doc/${package})
    file(MAKE_DIRECTORY ${documents})
    file(COPY_FILE ${CPACK_ORRINET_DEBIAN}/copyright ${documents}/copyright)
    file(COPY_FILE ${CPACK_ORRINET_CHANGELOG} ${documents}/changelog)
    compress(${documents}/changelog)
    if(EXISTS ${CPACK_ORRINET_DEBIAN}/${package}.overrides)
        file(MAKE_DIRECTORY ${share}/lintian/overrides)
        file(COPY_FILE ${CPACK_ORRINET_DEBIAN}/${package}.overrides ${share}/lintian/overrides/${package})
    endif()

    file(GLOB programs ${top}/bin/*)
    foreach(program IN LISTS programs)
        execute_process(COMMAND ${strip} --remove-section=.comment ${program} COMMAND_ERROR_IS_FATAL ANY)
    endforeach()

    file(GLOB pages ${share}/man/man1/*.1)
    foreach(page IN LISTS pages)
        compress(${page})
    endforeach()

    # Whatever the umask is.
    file(CHMOD ${top} ${top}/bin PERMISSIONS ${enterable})
    file(CHMOD_RECURSE ${share} FILE_PERMISSIONS ${readable} DIRECTORY_PERMISSIONS ${enterable})
endforeach()

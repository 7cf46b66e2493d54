# CPack runs this after the files of all packages are installed into folders of their own: adds and changes what Debian's
# packages have otherwise.
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    set(share "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}/usr/share")
    string(TOUPPER "${component}" upper)
    set(changelog "${share}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}/changelog.Debian")
    file(WRITE "${changelog}" "${CPACK_KX_CHANGELOG}")
    file(GLOB pages "${share}/man/man*/*.[0-9]")
    execute_process(COMMAND gzip -9nf "${changelog}" ${pages} COMMAND_ERROR_IS_FATAL ANY)
    if(EXISTS "${share}/zsh/site-functions")
        file(RENAME "${share}/zsh/site-functions" "${share}/zsh/vendor-completions")
    endif()
endforeach()

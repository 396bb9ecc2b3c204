# Run by CPack between installing and packing: what Debian wants in a package and an installation
# elsewhere does without. Pages of the manual are compressed, archives lose what no linker needs, and each
# package gets its list of changes and its copyright file.

if(NOT CPACK_GENERATOR STREQUAL "DEB")
    return()
endif()

function(compress file)
    execute_process(COMMAND gzip -9nf "${file}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

string(TIMESTAMP day "%a, %d %b %Y %H:%M:%S +0000" UTC)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER "${component}" upper)
    set(package "${CPACK_DEBIAN_${upper}_PACKAGE_NAME}")
    set(root "${CPACK_TEMPORARY_DIRECTORY}/${component}${CPACK_PACKAGING_INSTALL_PREFIX}")
    if(NOT IS_DIRECTORY "${root}")
        continue()
    endif()

    file(GLOB pages "${root}/share/man/man*/*.1")
    foreach(page IN LISTS pages)
        compress("${page}")
    endforeach()

    file(GLOB_RECURSE archives "${root}/lib/*.a")
    foreach(archive IN LISTS archives)
        execute_process(COMMAND strip --strip-debug --remove-section=.comment
                --enable-deterministic-archives "${archive}"
            COMMAND_ERROR_IS_FATAL ANY)
    endforeach()

    set(documents "${root}/share/doc/${package}")
    file(COPY "${CPACK_TAVARIN_SOURCE_DIR}/CHANGELOG.md" DESTINATION "${documents}")
    file(RENAME "${documents}/CHANGELOG.md" "${documents}/changelog")
    file(WRITE "${documents}/changelog.Debian"
"tavarin-link (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium

  * Version ${CPACK_PACKAGE_VERSION}; the other list of changes says what is new.

 -- ${CPACK_PACKAGE_CONTACT}  ${day}
")
    file(CONFIGURE OUTPUT "${documents}/copyright" CONTENT
"Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: tavarin-link
Upstream-Contact: ${CPACK_PACKAGE_CONTACT}

Files: *
Copyright: 2026 Tavarin Pro link developers
License: none
 The sources carry no licence: all rights are with their authors.
")
    compress("${documents}/changelog")
    compress("${documents}/changelog.Debian")
    file(GLOB_RECURSE files "${documents}/*")
    file(CHMOD ${files} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endforeach()

# tavarin_make_bundle(<module> IDENTIFIER <id> PRINCIPAL_CLASS <class> NIBS <xib>... IMAGES <png>...):
# makes <module>.bundle out of a MODULE library, laid out as the platform's NSBundle wants it, in
# the top of the build directory. Sets its full path as the target's property TAVARIN_BUNDLE.
#
# Nothing is exported from it: the platform finds the classes through the Objective-C runtime.
function(tavarin_make_bundle target)
    cmake_parse_arguments(ARG "" "IDENTIFIER;PRINCIPAL_CLASS" "NIBS;IMAGES" ${ARGN})
    set(TAVARIN_PLIST_EXECUTABLE ${target})
    set(TAVARIN_PLIST_IDENTIFIER "${ARG_IDENTIFIER}")
    set(TAVARIN_PLIST_PRINCIPAL_CLASS "${ARG_PRINCIPAL_CLASS}")
    set(bundle "${PROJECT_BINARY_DIR}/${target}.bundle")
    set_target_properties(${target} PROPERTIES
        PREFIX ""
        CXX_VISIBILITY_PRESET hidden
        OBJCXX_VISIBILITY_PRESET hidden
        TAVARIN_BUNDLE "${bundle}"
        LINKER_LANGUAGE CXX)

    if(APPLE)
        set_target_properties(${target} PROPERTIES
            BUNDLE ON
            BUNDLE_EXTENSION bundle
            LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}"
            MACOSX_BUNDLE_INFO_PLIST "${CMAKE_CURRENT_BINARY_DIR}/Info.plist")
        configure_file("${PROJECT_SOURCE_DIR}/cmake/Info.plist.in"
            "${CMAKE_CURRENT_BINARY_DIR}/Info.plist")
        set(resources "${bundle}/Contents/Resources")
    else()
        set_target_properties(${target} PROPERTIES
            SUFFIX ""
            LIBRARY_OUTPUT_DIRECTORY "${bundle}")
        target_link_options(${target} PRIVATE LINKER:--exclude-libs,ALL)
        set(resources "${bundle}/Resources")
        configure_file("${PROJECT_SOURCE_DIR}/cmake/Info-gnustep.plist.in"
            "${resources}/Info-gnustep.plist")
    endif()

    file(MAKE_DIRECTORY "${resources}")
    foreach(nib ${ARG_NIBS})
        get_filename_component(name "${nib}" NAME_WE)
        if(APPLE)
            tavarin_add_resource(${target} "${nib}" "${resources}/${name}.nib"
                xcrun ibtool --compile "${resources}/${name}.nib" "${nib}")
        else()
            tavarin_add_resource(${target} "${nib}" "${resources}/${name}.xib"
                ${CMAKE_COMMAND} -E copy_if_different "${nib}" "${resources}/${name}.xib")
        endif()
    endforeach()
    foreach(image ${ARG_IMAGES})
        get_filename_component(name "${image}" NAME)
        tavarin_add_resource(${target} "${image}" "${resources}/${name}"
            ${CMAKE_COMMAND} -E copy_if_different "${image}" "${resources}/${name}")
    endforeach()
endfunction()

# tavarin_add_resource(<module> <source> <result> <command>...): one file of the bundle.
function(tavarin_add_resource target source result)
    add_custom_command(OUTPUT "${result}" COMMAND ${ARGN} DEPENDS "${source}" VERBATIM)
    get_filename_component(name "${result}" NAME)
    string(REPLACE "@" "-" name "${name}")
    add_custom_target(${target}-${name} DEPENDS "${result}")
    add_dependencies(${target} ${target}-${name})
endfunction()

# What `cmake --install` puts where, in four components: Development (libraries, headers and what finds
# them), Tools (the command-line tools and the reference host), Views (the bundle and the programs that
# draw) and Plugin (the LV2 plug-ins). What was not built is not installed.
#
# Every place is relative to the prefix, so that a tree may be installed, and moved, anywhere.

include(CMakePackageConfigHelpers)

set(tavarin_headers_dir "${CMAKE_INSTALL_INCLUDEDIR}/tavarin-link")
set(tavarin_config_dir "${CMAKE_INSTALL_LIBDIR}/cmake/TavarinLink")
set(tavarin_pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

# Libraries. Those that need AppKit have an export file of their own: the others are to be found on a
# machine without it.
function(tavarin_install_libraries export)
    foreach(library ${ARGN})
        if(TARGET ${library})
            install(TARGETS ${library} EXPORT ${export}
                ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT Development)
            set(exported TRUE)
        endif()
    endforeach()
    if(exported)
        install(EXPORT ${export} NAMESPACE TavarinLink:: DESTINATION "${tavarin_config_dir}"
            COMPONENT Development)
    endif()
endfunction()

tavarin_install_libraries(TavarinLinkTargets
    tavarin_platform tavarin_fileio tavarin_utils tavarin_link)
if(TARGET tavarin_colours)
    tavarin_install_libraries(TavarinLinkAppKitTargets
        tavarin_appkit tavarin_coregraphics tavarin_drawing tavarin_colours tavarin_controls)
endif()

# Headers, under the paths that they are included by.
function(tavarin_install_headers from)
    foreach(header ${ARGN})
        if(EXISTS "${from}/${header}")
            get_filename_component(folder "${header}" DIRECTORY)
            file(RELATIVE_PATH below "${PROJECT_SOURCE_DIR}" "${from}/${folder}")
            install(FILES "${from}/${header}" DESTINATION "${tavarin_headers_dir}/${below}"
                COMPONENT Development)
        endif()
    endforeach()
endfunction()

file(STRINGS "${PROJECT_SOURCE_DIR}/cmake/PublicHeaders.txt" tavarin_public_headers)
tavarin_install_headers("${PROJECT_SOURCE_DIR}" ${tavarin_public_headers})
if(NOT TAVARIN_FRAMEWORKS)
    tavarin_install_headers("${PROJECT_SOURCE_DIR}/platform/posix" CoreFoundation/CoreFoundation.h)
    tavarin_install_headers("${PROJECT_SOURCE_DIR}/platform/gnustep" CoreGraphics/CoreGraphics.h)
endif()

# find_package.
write_basic_package_version_file("${PROJECT_BINARY_DIR}/TavarinLinkConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/TavarinLinkConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/TavarinLinkConfig.cmake"
    INSTALL_DESTINATION "${tavarin_config_dir}"
    PATH_VARS TAVARIN_BUNDLE_DIR)
install(FILES
    "${PROJECT_BINARY_DIR}/TavarinLinkConfig.cmake"
    "${PROJECT_BINARY_DIR}/TavarinLinkConfigVersion.cmake"
    "${PROJECT_SOURCE_DIR}/cmake/FindGNUstep.cmake"
    DESTINATION "${tavarin_config_dir}" COMPONENT Development)

# pkg-config: tavarin_add_pkgconfig(<name> <description> REQUIRES <name>... LIBS <flag>...).
file(RELATIVE_PATH tavarin_prefix_from_pkgconfig
    "/prefix/${tavarin_pkgconfig_dir}" "/prefix")
function(tavarin_add_pkgconfig name description)
    cmake_parse_arguments(ARG "" "" "REQUIRES;LIBS;CFLAGS" ${ARGN})
    list(JOIN ARG_REQUIRES ", " pc_requires)
    list(JOIN ARG_LIBS " " pc_libs)
    list(JOIN ARG_CFLAGS " " pc_cflags)
    set(pc_name "${name}")
    set(pc_description "${description}")
    configure_file("${PROJECT_SOURCE_DIR}/cmake/tavarin.pc.in"
        "${PROJECT_BINARY_DIR}/pkgconfig/${name}.pc" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/pkgconfig/${name}.pc"
        DESTINATION "${tavarin_pkgconfig_dir}" COMPONENT Development)
endfunction()

if(APPLE)
    set(pc_platform_libs -framework CoreFoundation -framework Foundation)
    set(pc_appkit_libs -framework CoreGraphics -framework AppKit)
    set(pc_keep_classes -ObjC)
else()
    set(pc_platform_cflags "-I\${includedir}/platform/posix")
    set(pc_realtime -lrt)
    set(pc_appkit_libs -ltavarin_coregraphics -lgnustep-gui -lgnustep-base -lobjc -lm)
    set(pc_appkit_cflags "-I\${includedir}/platform/gnustep")
    foreach(class QXButtonCell QXPopUpButtonCell ColoredTextField)
        list(APPEND pc_keep_classes "-Wl,--undefined=__objc_class_name_${class}")
    endforeach()
endif()
tavarin_add_pkgconfig(tavarin-fileio "directories, file names and files"
    LIBS -ltavarin_fileio -ltavarin_platform ${pc_platform_libs} CFLAGS ${pc_platform_cflags})
tavarin_add_pkgconfig(tavarin-link "the client of the Tavarin Pro link"
    REQUIRES tavarin-fileio LIBS -ltavarin_link ${pc_realtime})
tavarin_add_pkgconfig(tavarin-utils "typed parameters, session images, texts and time code"
    REQUIRES tavarin-fileio LIBS -ltavarin_utils)
if(TARGET tavarin_colours)
    tavarin_add_pkgconfig(tavarin-colours "colour schemes and the two palettes"
        REQUIRES tavarin-utils LIBS -ltavarin_colours ${pc_appkit_libs} CFLAGS ${pc_appkit_cflags})
endif()
if(TARGET tavarin_controls)
    tavarin_add_pkgconfig(tavarin-controls "controls in the colours of the scheme"
        REQUIRES tavarin-colours LIBS ${pc_keep_classes} -ltavarin_controls -ltavarin_drawing)
endif()

# tavarin_install_bundle(<module> <component> <directory>). On macOS CMake installs the whole bundle;
# elsewhere it knows of the module alone.
function(tavarin_install_bundle module component directory)
    if(NOT TARGET ${module})
        return()
    endif()
    if(APPLE)
        install(TARGETS ${module} LIBRARY DESTINATION "${directory}" COMPONENT ${component})
    else()
        get_target_property(bundle ${module} TAVARIN_BUNDLE)
        install(TARGETS ${module}
            LIBRARY DESTINATION "${directory}/${module}.bundle" COMPONENT ${component})
        install(DIRECTORY "${bundle}/Resources"
            DESTINATION "${directory}/${module}.bundle" COMPONENT ${component})
    endif()
endfunction()

tavarin_install_bundle(TavarinProLink Views "${TAVARIN_BUNDLE_DIR}")
tavarin_install_bundle(TavarinGallery Views "${TAVARIN_BUNDLE_DIR}")

# The controls' images, for bundles of others.
if(TARGET tavarin_controls)
    install(FILES ${TAVARIN_CONTROL_IMAGES} DESTINATION "${CMAKE_INSTALL_DATADIR}/tavarin-link"
        COMPONENT Development)
endif()

# The example of a plug-in, for whoever has no more of this tree than what is installed.
if(TARGET TavarinProLink)
    install(FILES
        "${PROJECT_SOURCE_DIR}/examples/plugin/CMakeLists.txt"
        "${PROJECT_SOURCE_DIR}/examples/plugin/show-view.mm"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/tavarin-link/examples/plugin" COMPONENT Development)
endif()

# The LV2 plug-ins, which have a copy of the bundle beside them.
if(TARGET tavarin_lv2)
    set(lv2_directory "${TAVARIN_LV2_DIRECTORY}/tavarin.lv2")
    install(DIRECTORY "${PROJECT_BINARY_DIR}/lv2/tavarin.lv2"
        DESTINATION "${TAVARIN_LV2_DIRECTORY}" COMPONENT Plugin
        FILES_MATCHING PATTERN "*.ttl" PATTERN "*.bundle" EXCLUDE)
    foreach(module IN ITEMS tavarin_lv2 tavarin_lv2_ui)
        if(TARGET ${module})
            install(TARGETS ${module} LIBRARY DESTINATION "${lv2_directory}" COMPONENT Plugin)
        endif()
    endforeach()
    if(TARGET tavarin-view)
        install(TARGETS tavarin-view RUNTIME DESTINATION "${lv2_directory}" COMPONENT Plugin)
        tavarin_install_bundle(TavarinProLink Plugin "${lv2_directory}")
    endif()
endif()

# Programs, each with its page of the manual and its completions.
file(READ "${PROJECT_SOURCE_DIR}/completions/help.awk" TAVARIN_HELP_PARSER)
function(tavarin_install_programs component)
    foreach(program ${ARGN})
        if(NOT TARGET ${program})
            continue()
        endif()
        install(TARGETS ${program} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
            COMPONENT ${component})
        set(completions "${PROJECT_BINARY_DIR}/completions")
        configure_file("${PROJECT_SOURCE_DIR}/completions/tavarin.bash.in"
            "${completions}/bash/${program}" @ONLY)
        configure_file("${PROJECT_SOURCE_DIR}/completions/tavarin.zsh.in"
            "${completions}/zsh/_${program}" @ONLY)
        # One table for all of them.
        file(READ "${PROJECT_SOURCE_DIR}/man/exit-status.in" TAVARIN_EXIT_STATUS)
        string(STRIP "${TAVARIN_EXIT_STATUS}" TAVARIN_EXIT_STATUS)
        configure_file("${PROJECT_SOURCE_DIR}/man/${program}.1.in"
            "${PROJECT_BINARY_DIR}/man/${program}.1" @ONLY)
        install(FILES "${PROJECT_BINARY_DIR}/man/${program}.1"
            DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT ${component})
        install(FILES "${completions}/bash/${program}"
            DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions"
            COMPONENT ${component})
        install(FILES "${completions}/zsh/_${program}"
            DESTINATION "${TAVARIN_ZSH_COMPLETIONS}" COMPONENT ${component})
    endforeach()
endfunction()

set(TAVARIN_ZSH_COMPLETIONS "${CMAKE_INSTALL_DATADIR}/zsh/site-functions" CACHE STRING
    "Where zsh looks for completions, below the prefix")
tavarin_install_programs(Tools tavarin tavarin-host)
tavarin_install_programs(Views tavarin-scheme tavarin-workstation)

# Finds AppKit and Foundation as GNUstep has them.
#
#   GNUSTEP_FOUND    whether an Objective-C++ program can be built against both
#   GNUstep::Gui     what to link: include paths, compiler flags (Objective-C++ only) and libraries
#
# The project must have enabled the language OBJCXX.

find_program(GNUSTEP_CONFIG gnustep-config)
if(GNUSTEP_CONFIG)
    # It runs make, and prints nothing where there is none.
    execute_process(COMMAND ${GNUSTEP_CONFIG} --objc-flags
        OUTPUT_VARIABLE gnustep_flags OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
find_path(GNUSTEP_INCLUDE_DIR AppKit/AppKit.h PATHS /usr/include/GNUstep)
find_library(GNUSTEP_BASE_LIBRARY gnustep-base)
find_library(GNUSTEP_GUI_LIBRARY gnustep-gui)
mark_as_advanced(GNUSTEP_CONFIG GNUSTEP_INCLUDE_DIR GNUSTEP_BASE_LIBRARY GNUSTEP_GUI_LIBRARY)

# GCC carries the header and the library of its Objective-C runtime in a directory of its own, where
# other compilers do not look.
find_program(GNUSTEP_GCC NAMES gcc-12 gcc)
if(GNUSTEP_GCC)
    execute_process(COMMAND ${GNUSTEP_GCC} -print-file-name=include
        OUTPUT_VARIABLE gnustep_runtime_headers OUTPUT_STRIP_TRAILING_WHITESPACE)
    get_filename_component(gnustep_runtime_library "${gnustep_runtime_headers}" DIRECTORY)
endif()
find_library(GNUSTEP_OBJC_LIBRARY objc HINTS ${gnustep_runtime_library})
mark_as_advanced(GNUSTEP_GCC GNUSTEP_OBJC_LIBRARY)

include(FindPackageHandleStandardArgs)
set(GNUstep_FIND_QUIETLY TRUE)
find_package_handle_standard_args(GNUstep REQUIRED_VARS
    GNUSTEP_CONFIG gnustep_flags GNUSTEP_INCLUDE_DIR GNUSTEP_BASE_LIBRARY GNUSTEP_GUI_LIBRARY
    GNUSTEP_OBJC_LIBRARY)
set(GNUSTEP_FOUND ${GNUstep_FOUND})

if(GNUstep_FOUND AND NOT TARGET GNUstep::Gui)
    separate_arguments(gnustep_flags UNIX_COMMAND "${gnustep_flags}")
    # Definitions and language switches only: optimisation, warnings and dependency files are the
    # project's own business, and the include paths must be system ones.
    list(FILTER gnustep_flags INCLUDE REGEX "^(-D|-f|-pthread)")
    list(REMOVE_ITEM gnustep_flags -fPIC)
    if(CMAKE_OBJCXX_COMPILER_ID MATCHES "Clang")
        list(APPEND gnustep_flags -fobjc-runtime=gcc "SHELL:-idirafter ${gnustep_runtime_headers}")
    endif()

    add_library(GNUstep::Gui INTERFACE IMPORTED)
    set_target_properties(GNUstep::Gui PROPERTIES
        INTERFACE_COMPILE_OPTIONS "$<$<COMPILE_LANGUAGE:OBJC,OBJCXX>:${gnustep_flags}>"
        INTERFACE_SYSTEM_INCLUDE_DIRECTORIES "${GNUSTEP_INCLUDE_DIR}"
        INTERFACE_INCLUDE_DIRECTORIES "${GNUSTEP_INCLUDE_DIR}"
        INTERFACE_LINK_LIBRARIES
            "${GNUSTEP_GUI_LIBRARY};${GNUSTEP_BASE_LIBRARY};${GNUSTEP_OBJC_LIBRARY};m")
endif()

# What the tree is built with. The product needs Boost's headers and threads; what the host, the
# tools, the tests and the benchmarks need beyond that is looked for, and what cannot be built without
# it is left out and named in one line each.

find_package(Boost 1.53 REQUIRED)
find_package(Threads REQUIRED)

find_package(nlohmann_json 3.10 QUIET)
find_package(CLI11 QUIET)
find_package(GTest QUIET)
find_package(PkgConfig QUIET)
if(PkgConfig_FOUND)
    # The name that it has differs from system to system.
    pkg_search_module(LUA QUIET IMPORTED_TARGET lua5.4 lua-5.4 lua54)
    pkg_check_modules(SNDFILE QUIET IMPORTED_TARGET sndfile)
    pkg_check_modules(SOXR QUIET IMPORTED_TARGET soxr)
    pkg_check_modules(LV2 QUIET IMPORTED_TARGET lv2)
    pkg_check_modules(XCB QUIET IMPORTED_TARGET xcb)
    pkg_check_modules(JACK QUIET IMPORTED_TARGET jack)
endif()

# tavarin_require(<what> <result> <variable>=<name>...): sets <result> to whether every variable is
# true, and says which names are missing when <what> has to be left out.
function(tavarin_require what result)
    set(missing "")
    foreach(requirement ${ARGN})
        string(REGEX MATCH "^([^=]+)=(.*)$" _ "${requirement}")
        if(NOT ${CMAKE_MATCH_1})
            list(APPEND missing "${CMAKE_MATCH_2}")
        endif()
    endforeach()
    if(missing)
        list(JOIN missing ", " names)
        message(STATUS "left out: ${what} (not found: ${names})")
        set(${result} OFF PARENT_SCOPE)
    else()
        set(${result} ON PARENT_SCOPE)
    endif()
endfunction()

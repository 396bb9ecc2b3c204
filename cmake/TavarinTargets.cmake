# What every target of the tree has in common: warnings, the include root, and how a test is declared.

include(GNUInstallDirs)

add_library(tavarin_warnings INTERFACE)
target_compile_options(tavarin_warnings INTERFACE -Wall -Wextra)

# tavarin_include_root(<target> <folder>): has users of the library look for headers in a folder of the
# tree, and in the same folder of an installed one.
function(tavarin_include_root target folder)
    target_include_directories(${target} PUBLIC
        "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}${folder}>"
        "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/tavarin-link${folder}>")
endfunction()

# tavarin_add_library(<target> <source>...): a static library whose headers are included from the
# repository root, as in "link/TANClientInterProcess.h".
function(tavarin_add_library target)
    add_library(${target} STATIC ${ARGN})
    add_library(TavarinLink::${target} ALIAS ${target})
    tavarin_include_root(${target} "")
    target_compile_features(${target} PUBLIC cxx_std_20)
    target_link_libraries(${target} PRIVATE "$<BUILD_INTERFACE:tavarin_warnings>")
endfunction()

# tavarin_define_version(<program>): tells a program its version, which is the project's.
function(tavarin_define_version program)
    target_compile_definitions(${program} PRIVATE TAVARIN_VERSION="${PROJECT_VERSION}")
endfunction()

# tavarin_add_test(<name> [SLOW] [SHARED_MEMORY | APPKIT] [LIBS <target>...] [SOURCES <file>...]
# [ENVIRONMENT <variable>=<value>]): builds <name>.cpp, or <name>.mm where there is one, and registers
# every test in it. SHARED_MEMORY tests use the link's fixed segment names and therefore never run
# beside each other. APPKIT tests use AppKit and keep away from the user's defaults. SLOW tests, which
# take seconds, are not part of the daily loop.
function(tavarin_add_test name)
    cmake_parse_arguments(ARG "SLOW;SHARED_MEMORY;APPKIT" "ENVIRONMENT" "LIBS;SOURCES" ${ARGN})
    set(source ${name}.cpp)
    if(EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/${name}.mm")
        set(source ${name}.mm)
    endif()
    add_executable(${name} ${source} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gtest tavarin_warnings)
    if(ARG_SHARED_MEMORY)
        target_link_libraries(${name} PRIVATE tavarin_link_test_main)
        set(properties PROPERTIES TIMEOUT 120 RESOURCE_LOCK tavarin_shared_memory)
    elseif(ARG_APPKIT)
        target_sources(${name} PRIVATE AppKitLeaks.cpp)
        target_link_libraries(${name} PRIVATE GTest::gtest_main)
        set(properties PROPERTIES TIMEOUT 120 ENVIRONMENT "${TAVARIN_APPKIT_TEST_ENVIRONMENT}")
    else()
        target_link_libraries(${name} PRIVATE GTest::gtest_main)
        set(properties PROPERTIES TIMEOUT 120)
    endif()
    if(ARG_ENVIRONMENT)
        list(APPEND properties ENVIRONMENT "${ARG_ENVIRONMENT}")
    endif()
    if(ARG_SLOW)
        list(APPEND properties LABELS slow)
    endif()
    gtest_discover_tests(${name} TEST_PREFIX "${name}." DISCOVERY_TIMEOUT 60 ${properties})
endfunction()

# tavarin_add_fuzz_target(<name> [SHARED_MEMORY] [LIBS <target>...] [SOURCES <file>...]): <name>.cpp, or
# <name>.mm where there is one, holds a libFuzzer entry. With TAVARIN_FUZZ it becomes the fuzzer
# <name>; with tests it is also run over the files of corpus/<name>, by any compiler. SHARED_MEMORY as
# for tests.
function(tavarin_add_fuzz_target name)
    cmake_parse_arguments(ARG "SHARED_MEMORY" "" "LIBS;SOURCES" ${ARGN})
    set(source ${name}.cpp)
    if(EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/${name}.mm")
        set(source ${name}.mm)
    endif()
    if(TAVARIN_FUZZ)
        add_executable(${name} ${source} ${ARG_SOURCES})
        target_compile_options(${name} PRIVATE -fsanitize=fuzzer)
        target_link_options(${name} PRIVATE -fsanitize=fuzzer)
        target_link_libraries(${name} PRIVATE ${ARG_LIBS} tavarin_warnings)
    endif()
    if(TAVARIN_TESTS)
        add_executable(${name}Replay ${source} ReplayMain.cpp ${ARG_SOURCES})
        target_link_libraries(${name}Replay PRIVATE ${ARG_LIBS} tavarin_warnings)
        add_test(NAME ${name}Replay
                 COMMAND ${name}Replay "${CMAKE_CURRENT_SOURCE_DIR}/corpus/${name}")
        set_tests_properties(${name}Replay PROPERTIES TIMEOUT 300)
        if(ARG_SHARED_MEMORY)
            set_tests_properties(${name}Replay PROPERTIES RESOURCE_LOCK tavarin_shared_memory)
        endif()
    endif()
endfunction()

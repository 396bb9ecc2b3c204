# Tests of the views. Each program is one entry of ctest, because starting its display takes longer
# than most of its tests. Without a display they are skipped with one line.

add_library(tavarin_view_test_main STATIC ViewFixture.mm)
target_link_libraries(tavarin_view_test_main PUBLIC
    tavarin_link_test_main tavarin_appkit tavarin_warnings)
target_compile_options(tavarin_view_test_main PUBLIC
    "$<$<COMPILE_LANG_AND_ID:OBJCXX,GNU>:-fobjc-call-cxx-cdtors>")
get_target_property(tavarin_bundle TavarinProLink TAVARIN_BUNDLE)
target_compile_definitions(tavarin_view_test_main PUBLIC
    TAVARIN_BUNDLE="${tavarin_bundle}"
    TAVARIN_BUNDLE_IDENTIFIER="${TAVARIN_BUNDLE_IDENTIFIER}")

# tavarin_register_view_test(<name> [<program> <argument>...]): runs a program, which is called like
# the test unless it is named, on a display and with user defaults of its own.
function(tavarin_register_view_test name)
    set(program ${name})
    if(ARGN)
        list(POP_FRONT ARGN program)
    endif()
    add_test(NAME ${name}
        COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/with-own-defaults"
                "${PROJECT_SOURCE_DIR}/scripts/with-display" --virtual
                $<TARGET_FILE:${program}> ${ARGN})
    # AppKit keeps objects until the process ends; ViewLeakTests looks for leaks of our own.
    set_tests_properties(${name} PROPERTIES
        TIMEOUT 600
        LABELS slow
        SKIP_RETURN_CODE 77
        RESOURCE_LOCK tavarin_shared_memory
        ENVIRONMENT "ASAN_OPTIONS=detect_leaks=0")
endfunction()

# tavarin_add_view_test(<name> [LIBS <target>...] [SOURCES <file>...]): builds <name>.mm, which
# drives the bundle.
function(tavarin_add_view_test name)
    cmake_parse_arguments(ARG "" "" "LIBS;SOURCES" ${ARGN})
    add_executable(${name} ${name}.mm ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LIBS} tavarin_view_test_main)
    add_dependencies(${name} TavarinProLink)
    tavarin_register_view_test(${name})
endfunction()

tavarin_add_view_test(LinkViewTests)
tavarin_add_view_test(APTLinkViewTests)
tavarin_add_view_test(DoublerLinkViewTests)
tavarin_add_view_test(ViewLifetimeTests)
tavarin_add_view_test(ViewFactoryTests LIBS tavarin_application)
# For the constants; the classes and the scheme are the bundle's.
target_include_directories(ViewFactoryTests PRIVATE
    "$<TARGET_PROPERTY:tavarin_coregraphics,INTERFACE_INCLUDE_DIRECTORIES>")
tavarin_add_view_test(ViewPointerTests SOURCES TestPointer.mm)
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    tavarin_register_view_test(ViewPointerTestsAt2x ViewPointerTests -GSScaleFactor 2)
    tavarin_add_view_test(ViewLeakTests)
endif()
if(TARGET tavarin-host)
    tavarin_add_view_test(HostRestartViewTests)
    target_compile_definitions(HostRestartViewTests PRIVATE
        TAVARIN_HOST_PROGRAM="$<TARGET_FILE:tavarin-host>")
    add_dependencies(HostRestartViewTests tavarin-host)
endif()

# This one has a class of its own to bring.
add_executable(ForeignClassTests ForeignClassTests.mm)
target_compile_definitions(ForeignClassTests PRIVATE TAVARIN_BUNDLE="${tavarin_bundle}")
target_link_libraries(ForeignClassTests PRIVATE
    tavarin_appkit GTest::gtest GTest::gtest_main tavarin_warnings)
add_dependencies(ForeignClassTests TavarinProLink)
tavarin_register_view_test(ForeignClassTests)

# This one is linked with the views themselves, and loads no bundle.
add_executable(ViewSupportTests ViewSupportTests.mm $<TARGET_OBJECTS:tavarin_views>)
target_link_libraries(ViewSupportTests PRIVATE tavarin_views GTest::gtest GTest::gtest_main)
tavarin_register_view_test(ViewSupportTests)

add_executable(ViewSchemeTests
    ViewSchemeTests.mm DrawingCalls.mm $<TARGET_OBJECTS:tavarin_views>)
target_compile_definitions(ViewSchemeTests PRIVATE TAVARIN_BUNDLE="${tavarin_bundle}")
target_link_libraries(ViewSchemeTests PRIVATE tavarin_views GTest::gtest GTest::gtest_main)
add_dependencies(ViewSchemeTests TavarinProLink)
tavarin_register_view_test(ViewSchemeTests)

# The finer files are chosen in GNUstep's way here; macOS has its own.
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    add_executable(BundleImageTests BundleImageTests.mm)
    target_compile_definitions(BundleImageTests PRIVATE TAVARIN_BUNDLE="${tavarin_bundle}")
    target_link_libraries(BundleImageTests PRIVATE
        tavarin_drawing GTest::gtest GTest::gtest_main tavarin_warnings)
    add_dependencies(BundleImageTests TavarinProLink)
    tavarin_register_view_test(BundleImageTests)
    tavarin_register_view_test(BundleImageTestsAt2x BundleImageTests -GSScaleFactor 2)
endif()

if(TARGET tavarin-host AND TARGET tavarin-workstation)
    add_executable(WorkstationTests WorkstationTests.cpp)
    target_link_libraries(WorkstationTests PRIVATE
        tavarin_link_test_main PkgConfig::SNDFILE tavarin_warnings)
    target_compile_definitions(WorkstationTests PRIVATE
        TAVARIN_BUNDLE="${tavarin_bundle}"
        TAVARIN_BUNDLE_IDENTIFIER="${TAVARIN_BUNDLE_IDENTIFIER}"
        TAVARIN_HOST_PROGRAM="$<TARGET_FILE:tavarin-host>"
        TAVARIN_WORKSTATION_PROGRAM="$<TARGET_FILE:tavarin-workstation>")
    add_dependencies(WorkstationTests tavarin-host tavarin-workstation)
    tavarin_register_view_test(WorkstationTests)
endif()

if(TARGET tavarin-host AND TARGET show-view)
    add_executable(PluginExampleTests PluginExampleTests.cpp)
    target_link_libraries(PluginExampleTests PRIVATE
        tavarin_link_test_main PkgConfig::SNDFILE tavarin_warnings)
    target_compile_definitions(PluginExampleTests PRIVATE
        TAVARIN_BUNDLE="${tavarin_bundle}"
        TAVARIN_HOST_PROGRAM="$<TARGET_FILE:tavarin-host>"
        TAVARIN_MINIMAL_HOST="$<TARGET_FILE:minimal-host>"
        TAVARIN_SHOW_VIEW="$<TARGET_FILE:show-view>")
    add_dependencies(PluginExampleTests tavarin-host minimal-host show-view)
    tavarin_register_view_test(PluginExampleTests)
endif()

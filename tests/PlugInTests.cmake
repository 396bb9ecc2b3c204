# Tests of the LV2 plug-ins. Those with hosts are skipped with one line where a host is missing.

get_property(tavarin_lv2_path GLOBAL PROPERTY TAVARIN_LV2_PATH)
set(tavarin_lv2_module "${tavarin_lv2_path}/tavarin.lv2")

if(CLI11_FOUND)
    add_executable(sound-compare SoundCompare.cpp)
    target_link_libraries(sound-compare PRIVATE
        CLI11::CLI11 PkgConfig::SNDFILE tavarin_warnings)
    add_test(NAME PlugInApplyTests
        COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/plugin-apply"
                "${tavarin_lv2_path}" $<TARGET_FILE:sound-compare>)
    set_tests_properties(PlugInApplyTests PROPERTIES
        LABELS slow TIMEOUT 300 SKIP_RETURN_CODE 77 RESOURCE_LOCK tavarin_shared_memory)
endif()

if(JACK_FOUND AND CLI11_FOUND)
    add_executable(jack-deck JackDeck.cpp)
    target_link_libraries(jack-deck PRIVATE
        PkgConfig::JACK PkgConfig::SNDFILE CLI11::CLI11 Threads::Threads tavarin_warnings)

    add_executable(plugin-stress PlugInStress.cpp)
    target_include_directories(plugin-stress PRIVATE "${PROJECT_SOURCE_DIR}")
    target_link_libraries(plugin-stress PRIVATE
        tavarin_plugin PkgConfig::LV2 PkgConfig::JACK CLI11::CLI11 ${CMAKE_DL_LIBS} tavarin_warnings)
    add_dependencies(plugin-stress tavarin_lv2)

    if(TARGET tavarin-view AND TARGET tavarin-host)
        add_test(NAME PlugInJackTests
            COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/with-own-defaults"
                    "${PROJECT_SOURCE_DIR}/scripts/with-display" --virtual
                    "${CMAKE_CURRENT_SOURCE_DIR}/plugin-jack" "${tavarin_lv2_path}"
                    $<TARGET_FILE_DIR:jack-deck>)
        set_tests_properties(PlugInJackTests PROPERTIES
            LABELS slow TIMEOUT 900 SKIP_RETURN_CODE 77 RESOURCE_LOCK tavarin_shared_memory)
    endif()
endif()

foreach(test CaptureRingTests PlugInStateTests SharedGuideTests TakePlayerTests TakeWriterTests TimeTextTests)
    tavarin_add_test(${test} LIBS tavarin_plugin)
    target_include_directories(${test} PRIVATE "${PROJECT_SOURCE_DIR}")
endforeach()
# A plug-in that goes hands over what it has left.
tavarin_add_test(PlugInTests SHARED_MEMORY LIBS tavarin_plugin)
target_include_directories(PlugInTests PRIVATE "${PROJECT_SOURCE_DIR}")

if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    add_executable(view-double ViewDouble.cpp
        "${PROJECT_SOURCE_DIR}/window/PlugInMirror.cpp"
        "${PROJECT_SOURCE_DIR}/window/PlugInWatch.cpp")
    target_link_libraries(view-double PRIVATE tavarin_plugin tavarin_warnings)
    tavarin_add_test(WindowProcessTests SHARED_MEMORY LIBS tavarin_plugin)
    target_compile_definitions(WindowProcessTests PRIVATE
        TAVARIN_VIEW_DOUBLE="$<TARGET_FILE:view-double>")
    add_dependencies(WindowProcessTests view-double)
endif()

if(TARGET tavarin-host AND TARGET tavarin)
    tavarin_add_test(LinkSenderTests SHARED_MEMORY LIBS tavarin_plugin nlohmann_json::nlohmann_json)
    target_compile_definitions(LinkSenderTests PRIVATE
        TAVARIN_HOST_PROGRAM="$<TARGET_FILE:tavarin-host>"
        TAVARIN_TOOL_PROGRAM="$<TARGET_FILE:tavarin>")
    add_dependencies(LinkSenderTests tavarin-host tavarin)
endif()

# These load the module from its file, as workstations do.
function(tavarin_add_module_test name)
    tavarin_add_test(${name} SHARED_MEMORY LIBS tavarin_plugin PkgConfig::LV2 ${CMAKE_DL_LIBS} ${ARGN})
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}")
    target_compile_definitions(${name} PRIVATE TAVARIN_LV2_MODULE="${tavarin_lv2_module}")
    add_dependencies(${name} tavarin_lv2)
endfunction()

tavarin_add_module_test(PlugInModuleTests)
# The trap takes the place of calls that sanitizers take the place of, too.
if(CMAKE_SYSTEM_NAME STREQUAL "Linux" AND NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize=")
    tavarin_add_module_test(PlugInRealTimeTests)
    target_sources(PlugInRealTimeTests PRIVATE RealTimeTrap.cpp)
endif()

# On a display. The link's names are free, so that no host is there but a test's own.
if(TARGET tavarin-view AND TARGET tavarin-host AND TARGET tavarin)
    add_executable(PlugInWindowTests PlugInWindowTests.cpp)
    target_include_directories(PlugInWindowTests PRIVATE "${PROJECT_SOURCE_DIR}")
    target_link_libraries(PlugInWindowTests PRIVATE
        tavarin_plugin tavarin_link_test_main tavarin_window_holder PkgConfig::XCB
        PkgConfig::LV2 nlohmann_json::nlohmann_json ${CMAKE_DL_LIBS} tavarin_warnings)
    target_compile_definitions(PlugInWindowTests PRIVATE
        TAVARIN_LV2_MODULE="${tavarin_lv2_module}"
        TAVARIN_HOST_PROGRAM="$<TARGET_FILE:tavarin-host>"
        TAVARIN_TOOL_PROGRAM="$<TARGET_FILE:tavarin>")
    add_dependencies(PlugInWindowTests tavarin-view tavarin-host tavarin)
    tavarin_register_view_test(PlugInWindowTests)
endif()

find_program(TAVARIN_LV2_VALIDATE lv2_validate)
if(TAVARIN_LV2_VALIDATE)
    add_test(NAME PlugInTurtleIsValid COMMAND sh -c
        "result=\"$('${TAVARIN_LV2_VALIDATE}' '${tavarin_lv2_module}'/*.ttl 2>&1)\"; echo \"$result\"; echo \"$result\" | grep -q 'Found 0 errors'")
endif()

# What workstations list them by, as lilv tells most of them.
find_program(TAVARIN_LV2_INFO lv2info)
if(TAVARIN_LV2_INFO)
    foreach(plugin link link:stereo apt apt:stereo doubler doubler:stereo)
        add_test(NAME PlugInListing:${plugin} COMMAND "${TAVARIN_LV2_INFO}" "urn:tavarin:pro:${plugin}")
        set_tests_properties(PlugInListing:${plugin} PROPERTIES
            ENVIRONMENT "LV2_PATH=${tavarin_lv2_path}:/usr/lib/lv2"
            PASS_REGULAR_EXPRESSION "Class: +Plugin\n[^A-Z]*Author: +Tavarin Pro\n")
    endforeach()
endif()

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
    set_tests_properties(PlugInApplyTests PROPERTIES TIMEOUT 300 SKIP_RETURN_CODE 77)
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

    if(TARGET tavarin_lv2_ui AND TARGET tavarin-host)
        add_test(NAME PlugInJackTests
            COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/with-own-defaults"
                    "${PROJECT_SOURCE_DIR}/scripts/with-display" --virtual
                    "${CMAKE_CURRENT_SOURCE_DIR}/plugin-jack" "${tavarin_lv2_path}"
                    $<TARGET_FILE_DIR:jack-deck>)
        set_tests_properties(PlugInJackTests PROPERTIES
            TIMEOUT 300 SKIP_RETURN_CODE 77 RESOURCE_LOCK tavarin_shared_memory)
    endif()
endif()

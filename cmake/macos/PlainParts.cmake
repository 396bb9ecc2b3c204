# The plain C++ in folders that need AppKit as a whole, compiled and not linked: for a build for macOS
# where there are no frameworks.
foreach(folder IN ITEMS Source colours controls tools/scheme window workstation)
    file(GLOB found CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${folder}/*.cpp")
    list(APPEND plain_parts ${found})
endforeach()
add_library(tavarin_plain_parts OBJECT ${plain_parts})
target_link_libraries(tavarin_plain_parts PRIVATE
    tavarin_coregraphics tavarin_link tavarin_plugin tavarin_tool_basics tavarin_utils CLI11::CLI11
    nlohmann_json::nlohmann_json PkgConfig::SNDFILE tavarin_warnings)
target_include_directories(tavarin_plain_parts PRIVATE "${PROJECT_SOURCE_DIR}/platform/gnustep")
tavarin_define_version(tavarin_plain_parts)
target_compile_definitions(tavarin_plain_parts PRIVATE
    TAVARIN_BUNDLE_IDENTIFIER="" TAVARIN_INSTALLED_BUNDLES="")

if(TAVARIN_TESTS)
    set(tests ColourVision ComponentCode Gradient PluginExample SchemeJson
        SchemeRule SchemeStorage SchemeTool Workstation)
    list(TRANSFORM tests REPLACE "(.+)" "${PROJECT_SOURCE_DIR}/tests/\\1Tests.cpp")
    add_library(tavarin_plain_tests OBJECT ${tests})
    target_link_libraries(tavarin_plain_tests PRIVATE
        tavarin_coregraphics tavarin_plugin tavarin_tool_basics PkgConfig::LV2 GTest::gtest
        tavarin_warnings)
    target_compile_definitions(tavarin_plain_tests PRIVATE
        TAVARIN_BUNDLE="" TAVARIN_BUNDLE_IDENTIFIER="" TAVARIN_HOST_PROGRAM="" TAVARIN_LV2_MODULE=""
        TAVARIN_MINIMAL_HOST="" TAVARIN_SCHEME_PROGRAM="" TAVARIN_SHOW_VIEW=""
        TAVARIN_WORKSTATION_PROGRAM="")
endif()

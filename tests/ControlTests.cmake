# Tests of drawing, in a real graphics context on a virtual display of their own.

add_library(tavarin_drawing_test_main STATIC DrawingFixture.mm DrawingCalls.mm)
target_link_libraries(tavarin_drawing_test_main PUBLIC
    tavarin_controls GTest::gtest GTest::gtest_main tavarin_warnings)

# tavarin_add_drawing_test(<name> [ARROW]): builds <name>.mm, which has a directory for its resources.
# ARROW puts the pop-ups' arrow there.
function(tavarin_add_drawing_test name)
    cmake_parse_arguments(ARG "ARROW" "" "" ${ARGN})
    add_executable(${name} ${name}.mm)
    target_link_libraries(${name} PRIVATE tavarin_drawing_test_main)
    set(resources "$<TARGET_FILE_DIR:${name}>/Resources/${name}")
    add_custom_command(TARGET ${name} POST_BUILD
        COMMAND ${CMAKE_COMMAND} -E make_directory "${resources}" VERBATIM)
    if(ARG_ARROW)
        add_custom_command(TARGET ${name} POST_BUILD
            COMMAND ${CMAKE_COMMAND} -E copy_if_different ${TAVARIN_CONTROL_IMAGES} "${resources}"
            VERBATIM)
    endif()
    tavarin_register_view_test(${name})
    set_tests_properties(${name} PROPERTIES RESOURCE_LOCK "")
endfunction()

tavarin_add_drawing_test(GraphicUtilsTests)
tavarin_add_drawing_test(ControlCellTests ARROW)
tavarin_add_drawing_test(ColoredTextFieldTests)
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    tavarin_add_drawing_test(CoreGraphicsDrawingTests)
    tavarin_add_drawing_test(ControlLeakTests)
    target_compile_definitions(ControlLeakTests PRIVATE
        TAVARIN_ARROW="${PROJECT_SOURCE_DIR}/resources/PopupArrow.png")
    # Four hundred thousand drawings take their time on a busy machine or under a sanitizer.
    set_tests_properties(ControlLeakTests PROPERTIES TIMEOUT 1800)
endif()

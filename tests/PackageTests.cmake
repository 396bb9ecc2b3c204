# Tests of what is installed: the manual against the programs' help, the completions, and strangers who
# find an installed tree or take this one as a subdirectory. They are scripts, each one entry of ctest.

set(programs "")
foreach(program IN ITEMS tavarin tavarin-host tavarin-scheme tavarin-workstation)
    if(TARGET ${program})
        list(APPEND programs $<TARGET_FILE:${program}>)
    endif()
endforeach()
set(compilation
    "-DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER}" "-DCMAKE_CXX_FLAGS=${CMAKE_CXX_FLAGS}")
if(TAVARIN_APPKIT)
    list(APPEND compilation "-DCMAKE_OBJCXX_COMPILER=${CMAKE_OBJCXX_COMPILER}"
        "-DCMAKE_OBJCXX_FLAGS=${CMAKE_OBJCXX_FLAGS}")
endif()

if(programs AND TARGET tavarin AND TARGET tavarin-host)
    add_test(NAME ManualTests
        COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/manual-test" "${PROJECT_BINARY_DIR}/man"
                "${PROJECT_SOURCE_DIR}/completions/help.awk" ${programs})
    add_test(NAME ExitStatusTests
        COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/exit-status-test" "${PROJECT_SOURCE_DIR}/man"
                ${programs})
    set_tests_properties(ExitStatusTests PROPERTIES
        TIMEOUT 120 LABELS slow RESOURCE_LOCK tavarin_shared_memory)
    foreach(shell IN ITEMS bash zsh)
        add_test(NAME CompletionTests.${shell}
            COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/completion-test" ${shell}
                    "${PROJECT_BINARY_DIR}/completions" $<TARGET_FILE_DIR:tavarin>)
        set_tests_properties(CompletionTests.${shell} PROPERTIES SKIP_RETURN_CODE 77)
    endforeach()
    add_test(NAME InstallTests
        COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/install-test" "${CMAKE_COMMAND}"
                "${PROJECT_BINARY_DIR}" "${PROJECT_VERSION}" ${compilation})
endif()
if(programs AND TARGET tavarin AND TARGET tavarin-host)
    set(journeys engineer host-developer session-reader)
    if(TARGET tavarin-workstation AND TARGET tavarin-scheme AND NOT APPLE)
        list(APPEND journeys designer plugin-developer workstation-user)
    endif()
    foreach(journey IN LISTS journeys)
        add_test(NAME JourneyTests.${journey}
            COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/journeys/journey" "${CMAKE_COMMAND}"
                    "${PROJECT_BINARY_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}/journeys/${journey}"
                    ${compilation})
        set_tests_properties(JourneyTests.${journey} PROPERTIES TIMEOUT 300 LABELS slow
            SKIP_RETURN_CODE 77 RESOURCE_LOCK tavarin_shared_memory
            ENVIRONMENT "ASAN_OPTIONS=detect_leaks=0")
    endforeach()
endif()
add_test(NAME SubdirectoryTests
    COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/subdirectory-test" "${CMAKE_COMMAND}"
            "${PROJECT_SOURCE_DIR}" ${compilation})
foreach(test IN ITEMS ManualTests CompletionTests.bash CompletionTests.zsh InstallTests SubdirectoryTests)
    if(TEST ${test})
        # Programs that are linked with AppKit never give all of it back.
        set_tests_properties(${test} PROPERTIES TIMEOUT 600
            ENVIRONMENT "ASAN_OPTIONS=detect_leaks=0")
    endif()
endforeach()
foreach(test IN ITEMS CompletionTests.zsh InstallTests SubdirectoryTests)
    if(TEST ${test})
        set_tests_properties(${test} PROPERTIES LABELS slow)
    endif()
endforeach()

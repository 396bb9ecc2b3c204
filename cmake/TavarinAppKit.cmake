# Looks for AppKit: the system's frameworks on macOS, GNUstep elsewhere.
#
#   TAVARIN_APPKIT    whether it was found
#   tavarin_appkit    what to link: include paths, the flags of Objective-C++ sources (manual
#                     reference counting, C++20) and the libraries

# Objective-C++ is compiled by the C++ compiler with the same flags, so that sanitizers cover it too.
include(CheckLanguage)
foreach(language OBJC OBJCXX)
    if(NOT DEFINED ENV{${language}})
        set(ENV{${language}} "${CMAKE_CXX_COMPILER}")
    endif()
endforeach()
set(CMAKE_OBJC_FLAGS "${CMAKE_CXX_FLAGS}" CACHE STRING "Flags of Objective-C sources")
set(CMAKE_OBJCXX_FLAGS "${CMAKE_CXX_FLAGS}" CACHE STRING "Flags of Objective-C++ sources")
set(CMAKE_MESSAGE_LOG_LEVEL_BEFORE "${CMAKE_MESSAGE_LOG_LEVEL}")
set(CMAKE_MESSAGE_LOG_LEVEL NOTICE)
check_language(OBJCXX)
set(CMAKE_MESSAGE_LOG_LEVEL "${CMAKE_MESSAGE_LOG_LEVEL_BEFORE}")
unset(CMAKE_MESSAGE_LOG_LEVEL_BEFORE)

set(TAVARIN_APPKIT FALSE)
if(CMAKE_OBJCXX_COMPILER)
    enable_language(OBJC OBJCXX)
    if(APPLE)
        set(TAVARIN_APPKIT TRUE)
    else()
        find_package(GNUstep)
        set(TAVARIN_APPKIT ${GNUstep_FOUND})
    endif()
endif()

if(TAVARIN_APPKIT)
    add_library(tavarin_appkit INTERFACE)
    # CMake 3.25 passes no -std to GCC for Objective-C++.
    target_compile_options(tavarin_appkit INTERFACE "$<$<COMPILE_LANGUAGE:OBJCXX>:-std=c++20>")
    if(APPLE)
        target_compile_options(tavarin_appkit INTERFACE
            "$<$<COMPILE_LANGUAGE:OBJCXX>:-fno-objc-arc>")
        target_link_libraries(tavarin_appkit INTERFACE
            "-framework AppKit" "-framework Foundation" "-framework CoreGraphics")
    else()
        target_link_libraries(tavarin_appkit INTERFACE GNUstep::Gui)
    endif()
endif()

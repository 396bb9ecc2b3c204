# Compiles and links for macOS elsewhere. For checks: what ships is made on a Mac.
#
#   TAVARIN_ZIG             the compiler's program
#   TAVARIN_MAC_PROCESSOR   arm64 or x86_64
#   TAVARIN_MAC_OLDEST      the oldest macOS, such as 13.3
#   TAVARIN_MAC_LIBRARIES   what CMakeLists.txt beside this file has installed for that processor

list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES
    TAVARIN_ZIG TAVARIN_MAC_PROCESSOR TAVARIN_MAC_OLDEST TAVARIN_MAC_LIBRARIES)

set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_VERSION 22)
set(CMAKE_SYSTEM_PROCESSOR ${TAVARIN_MAC_PROCESSOR})
set(CMAKE_SIZEOF_VOID_P 8)
set(CMAKE_OSX_SYSROOT "")
# The compiler is told of the oldest macOS by the name of its target.
set(CMAKE_OSX_DEPLOYMENT_TARGET "" CACHE STRING "" FORCE)
string(REPLACE arm64 aarch64 processor ${TAVARIN_MAC_PROCESSOR})
set(target -target ${processor}-macos.${TAVARIN_MAC_OLDEST} -fno-sanitize=undefined)

set(CMAKE_C_COMPILER ${TAVARIN_ZIG} cc ${target})
set(CMAKE_CXX_COMPILER ${TAVARIN_ZIG} c++ ${target})
find_program(CMAKE_AR NAMES llvm-ar-14 llvm-ar REQUIRED)
find_program(CMAKE_RANLIB NAMES llvm-ranlib-14 llvm-ranlib REQUIRED)
find_program(CMAKE_INSTALL_NAME_TOOL NAMES llvm-install-name-tool-14 llvm-install-name-tool REQUIRED)

# Its linker knows no loadable bundles; a dynamic library is opened just so.
set(CMAKE_MODULE_LINKER_FLAGS_INIT -dynamiclib)

set(CMAKE_FIND_ROOT_PATH "${TAVARIN_MAC_LIBRARIES}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR} "${TAVARIN_MAC_LIBRARIES}/lib/pkgconfig")
set(Boost_NO_BOOST_CMAKE ON)

# No test can be asked for its cases here.
set(CMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE PRE_TEST)

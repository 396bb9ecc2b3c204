# What CPack makes: one Debian package for each component of TavarinInstall. scripts/package calls it.
#
# A package is what `cmake --install` puts under the prefix, and what cmake/DebianDocs.cmake adds to it.

set(CPACK_PACKAGE_NAME tavarin-link)
set(CPACK_PACKAGE_VENDOR "Tavarin Pro link developers")
set(CPACK_PACKAGE_CONTACT "Tavarin Pro link developers <developers@tavarin.example>")
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)

# Each package has a first line of its own. CPack puts the project's before it, unless that is the one
# that CPack made up.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${CMAKE_PROJECT_NAME} built using CMake")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL Development Tools Views)
if(TARGET tavarin_lv2)
    list(APPEND CPACK_COMPONENTS_ALL Plugin)
endif()
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/DebianDocs.cmake")
set(CPACK_TAVARIN_SOURCE_DIR "${PROJECT_SOURCE_DIR}")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtavarin-link-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS
    "tavarin-views, cmake, make, pkg-config, libgnustep-gui-dev, gobjc++")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "client of the Tavarin Pro link, for developers
Static libraries and headers with which audio plug-ins talk to the Tavarin
Pro application, and other host applications answer them: the link client
and its shared-memory records, typed parameters and session images, files,
time code, and (with GNUstep) colour schemes.

They are found by find_package(TavarinLink) of CMake and by pkg-config.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME tavarin-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS "tavarin-views (= ${PROJECT_VERSION}-1)")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
    "command-line tools and reference host of the Tavarin Pro link
tavarin talks to a running host application, looks into session files and
converts time code. tavarin-host answers the link in place of the Tavarin
Pro application, for development, demonstrations and tests.")

set(CPACK_DEBIAN_VIEWS_PACKAGE_NAME tavarin-views)
set(CPACK_DEBIAN_VIEWS_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_VIEWS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_VIEWS_PACKAGE_DEPENDS "gnustep-back0.29-cairo | gnustep-back0.29, fonts-dejavu-core")
set(CPACK_DEBIAN_VIEWS_PACKAGE_RECOMMENDS "tavarin-tools")
set(CPACK_COMPONENT_VIEWS_DESCRIPTION
    "views of the Tavarin Pro link plug-ins, and a workstation to try them
The bundle from which audio plug-ins take their views, the tool for colour
schemes, and tavarin-workstation, which loads the bundle, shows its views
and sends them what a workstation sends.")

set(CPACK_DEBIAN_PLUGIN_PACKAGE_NAME tavarin-lv2)
set(CPACK_DEBIAN_PLUGIN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PLUGIN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PLUGIN_PACKAGE_DEPENDS "gnustep-back0.29-cairo | gnustep-back0.29, fonts-dejavu-core")
set(CPACK_DEBIAN_PLUGIN_PACKAGE_SUGGESTS "tavarin-tools, lv2-host")
set(CPACK_COMPONENT_PLUGIN_DESCRIPTION
    "LV2 plug-ins of the Tavarin Pro link
Audio plug-ins that capture takes in a workstation, hand them to the Tavarin
Pro application or to the reference host, and play what comes back.")

include(CPack)

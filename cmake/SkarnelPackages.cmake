# The Debian packages: one for each component that has something to install.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME skarnel)
# Each component has a synopsis of its own; a common one would be put before it.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_VENDOR "The Skarnel developers")
set(CPACK_PACKAGE_CONTACT "The Skarnel developers <packages@${SKARNEL_HELP_HOST}>")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL window cli)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_WINDOW_PACKAGE_NAME skarnel)
set(CPACK_DEBIAN_WINDOW_PACKAGE_SECTION graphics)
# The help and the guide are opened by xdg-open. Text is set in Liberation, and the window in DejaVu
# where the desktop names no font: without it a bare system answers with a monospaced one.
set(CPACK_DEBIAN_WINDOW_PACKAGE_DEPENDS "skarnel-cli (= ${PROJECT_VERSION}-1), xdg-utils")
set(CPACK_DEBIAN_WINDOW_PACKAGE_RECOMMENDS "fonts-dejavu-core, fonts-liberation, qt6-translations-l10n, qt6-wayland")
set(CPACK_COMPONENT_WINDOW_DESCRIPTION
"turn a picture or styled text into its reflection
Skarnel stands a picture above its mirror image, which is squashed or
stretched, widened towards its far edge and faded out. The whole can be
turned in perspective, laid on a colour, saved at full resolution and
copied to the clipboard with its transparency.
.
This package holds the application with its window.")

set(CPACK_DEBIAN_CLI_PACKAGE_NAME skarnel-cli)
set(CPACK_DEBIAN_CLI_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_CLI_PACKAGE_SUGGESTS "skarnel")
# The codecs' libraries are not linked, so they are looked up by their sonames.
function(skarnel_packages_of result)
    set(packages "")
    foreach(soname IN LISTS ARGN)
        execute_process(COMMAND dpkg-query -S "*/${soname}" OUTPUT_VARIABLE owners ERROR_QUIET)
        if(owners MATCHES "^([^:,\n]+)")
            list(APPEND packages "${CMAKE_MATCH_1}")
        endif()
    endforeach()
    list(REMOVE_DUPLICATES packages)
    list(JOIN packages ", " packages)
    set(${result} "${packages}" PARENT_SCOPE)
endfunction()
get_property(codecSonames GLOBAL PROPERTY SKARNEL_CODEC_SONAMES)
skarnel_packages_of(codecPackages ${codecSonames})
set(CPACK_DEBIAN_CLI_PACKAGE_DEPENDS "${codecPackages}")
# The large ones may be missing: libNAME.so.VERSION is in package libNAMEVERSION.
get_property(lateSonames GLOBAL PROPERTY SKARNEL_LATE_SONAMES)
string(REGEX REPLACE "\\.so\\.([0-9.]+)" "\\1" latePackages "${lateSonames}")
list(JOIN latePackages ", " CPACK_DEBIAN_CLI_PACKAGE_RECOMMENDS)
set(CPACK_COMPONENT_CLI_DESCRIPTION
"turn pictures into their reflections from the command line
skarnel-render stands pictures above their mirror images, squashed or
stretched, widened towards the far edge and faded out, in the same bytes
as the application's window would save.
.
This package needs no display and no window toolkit.")

if(TARGET skarnel_util_package OR SKARNEL_UTIL_PACKAGE)
    list(APPEND CPACK_COMPONENTS_ALL util-dev)
endif()
set(CPACK_DEBIAN_UTIL-DEV_PACKAGE_NAME libskarnel-util-dev)
set(CPACK_DEBIAN_UTIL-DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_UTIL-DEV_PACKAGE_DEPENDS "${codecPackages}")
# The library may be loaded as soon as it is there.
set(CPACK_DEBIAN_UTIL-DEV_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/packaging/debian/triggers")
set(CPACK_COMPONENT_UTIL-DEV_DESCRIPTION
"geometry, string and image helpers of Skarnel (development files)
Rectangle arithmetic, string extensions on UTF-16 and image categories as a
general C++20 library, with its headers, a shared library and a CMake package.
.
Nothing in it needs a window toolkit.")

# Each package carries its changelog and its copyright file.
find_program(SKARNEL_GZIP gzip REQUIRED)
set(changelog "${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian")
configure_file("${PROJECT_SOURCE_DIR}/packaging/debian/changelog.in" "${changelog}" @ONLY)
add_custom_command(OUTPUT "${changelog}.gz" COMMAND "${SKARNEL_GZIP}" -9nkf "${changelog}"
                   DEPENDS "${changelog}" VERBATIM)
add_custom_target(debian_changelog ALL DEPENDS "${changelog}.gz")
foreach(pair IN ITEMS window:skarnel cli:skarnel-cli util-dev:libskarnel-util-dev)
    string(REPLACE ":" ";" pair "${pair}")
    list(GET pair 0 component)
    list(GET pair 1 package)
    if(component IN_LIST CPACK_COMPONENTS_ALL)
        install(FILES "${PROJECT_SOURCE_DIR}/packaging/debian/copyright" "${changelog}.gz"
                DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${package}" COMPONENT ${component})
    endif()
endforeach()

include(CPack)

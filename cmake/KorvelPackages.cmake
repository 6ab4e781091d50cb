# Debian packages, by "cpack -G DEB" in a build tree: libkorvel1, libkorvel-dev and korvel-tools.

set(KORVEL_PACKAGE_MAINTAINER "libkorvel maintainers <maintainers@example.org>" CACHE STRING
    "Who is named in packages; whoever hands them on puts an address here that is read")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME korvel)
set(CPACK_PACKAGE_CONTACT "${KORVEL_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
# Whatever the umask is.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                                WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/KorvelPackageFiles.cmake")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}")
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(korvel_same_version "libkorvel1 (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libkorvel1)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
# Beside the scripts with ldconfig, which CPack can't be told to leave out.
file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/debian/triggers" CONTENT "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA "${PROJECT_BINARY_DIR}/debian/triggers")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION
    "image processing for applications of industrial cameras
Turns what a camera delivers, in 49 pixel formats, into pictures: unpacks,
demosaics, corrects, mirrors and shrinks frames, and reads and writes BMP,
PNG, JPEG, RAW and AVI files.
.
This package has the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkorvel-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${korvel_same_version}")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
    "image processing for applications of industrial cameras (development)
Turns what a camera delivers, in 49 pixel formats, into pictures.
.
This package has what programs are built with: the headers for C and C++,
files for CMake and pkg-config, documentation and examples.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME korvel-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${korvel_same_version}")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION
    "look at and convert frames of industrial cameras
The command korvel tells what frames and image files hold, converts them,
corrects and draws them, and records videos.")

include(CPack)
cpack_add_component_group(library)
cpack_add_component_group(development)
cpack_add_component_group(tools)
cpack_add_component(runtime GROUP library)
cpack_add_component(development GROUP development)
cpack_add_component(documentation GROUP development)
cpack_add_component(tools GROUP tools)

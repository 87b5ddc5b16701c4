# Debian packages of what is installed: `cmake --workflow --preset deb` makes them, `cpack` alone does it again.
# The prefix of the build has to be /usr: then libraries go into the folder of their processor.

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Each package has a first line of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_CONTACT "tesk developers <tesk@localhost.invalid>")
set(CPACK_DEBIAN_PACKAGE_SOURCE tesk)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

set(CPACK_COMPONENTS_ALL development)
set(about "tesk compresses raw images of 8-bit gray, 16-bit gray, and red, green and blue
without loss. Its streams may be cut at any byte: a prefix gives an
approximation of the image.
.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtesk-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS tesk-tools)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "lossless, embedded codec for raw images (development)
${about}
This package has what programs are built with: the headers for C and C++, the
static library, files for pkg-config and CMake, manual pages and examples.")

if(shared IN_LIST TESK_LIBRARY_KINDS)
  list(APPEND CPACK_COMPONENTS_ALL library)
  set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libtesk${PROJECT_VERSION_MAJOR})
  set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
  set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "lossless, embedded codec for raw images (library)
${about}
This package has the shared library.")
  set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
  set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
  # Debian wants a trigger, and not the scripts that cpack adds where it is given none. These two are not there,
  # of which it warns.
  set(no_scripts "${PROJECT_BINARY_DIR}/debian-none/postinst" "${PROJECT_BINARY_DIR}/debian-none/postrm")
  set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/packaging/triggers" ${no_scripts})
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${CPACK_DEBIAN_LIBRARY_PACKAGE_NAME} (= ${PROJECT_VERSION})")
endif()

if(TESK_BUILD_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL tools)
  set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME tesk-tools)
  set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION graphics)
  set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS libtesk-dev)
  set(CPACK_DEBIAN_TOOLS_DESCRIPTION "lossless, embedded codec for raw images (programs)
${about}
This package has the programs, their manual pages, the media type, and the
definition of the format.")
endif()

# Its plugin has no soname, as nothing is linked with it: cpack warns that it is not among the shared libraries.
if(TARGET tesk_hdf5)
  list(APPEND CPACK_COMPONENTS_ALL hdf5)
  set(CPACK_DEBIAN_HDF5_PACKAGE_NAME tesk-hdf5)
  set(CPACK_DEBIAN_HDF5_PACKAGE_SECTION science)
  set(CPACK_DEBIAN_HDF5_PACKAGE_SUGGESTS "hdf5-tools, python3-h5py")
  set(CPACK_DEBIAN_HDF5_DESCRIPTION "lossless, embedded codec for raw images (HDF5 filter)
${about}
This package has a plugin for HDF5: programs that use it, as h5py and h5repack,
write and read datasets whose chunks are streams of tesk.")
endif()

# What packages have, and other installations do not: made here, put into each package before it is packed.
set(CPACK_TESK_DOCUMENTS "${PROJECT_BINARY_DIR}/debian")
file(READ LICENSE license)
string(REGEX MATCH "Copyright \\(c\\) ([^\n]*)\n+(.*[^\n])\n*$" license "${license}")
set(holders "${CMAKE_MATCH_1}")
string(REPLACE "\n\n" "\n.\n" license "${CMAKE_MATCH_2}")
string(REPLACE "\n" "\n " license "${license}")
configure_file(packaging/debian-copyright.in "${CPACK_TESK_DOCUMENTS}/copyright" @ONLY)
string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(packaging/debian-changelog.in "${CPACK_TESK_DOCUMENTS}/changelog" @ONLY)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/package-documents.cmake")

include(CPack)

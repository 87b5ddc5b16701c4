include(CMakePackageConfigHelpers)

# The parts that are packages of their own: library, development, tools, hdf5.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME tools)

if(TESK_BUILD_TOOLS)
  install(TARGETS tesk tesk_info RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
  install(FILES docs/man/tesk.1 docs/man/tesk-info.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
  # Shells look for the completion of a command in the file of its name.
  foreach(command IN ITEMS tesk tesk-info)
    install(FILES packaging/tesk.bash RENAME "${command}"
      DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
  endforeach()
endif()

# It needs libraries of image formats, so it is not in every build.
if(TARGET tesk_convert)
  install(TARGETS tesk_convert RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
  install(FILES docs/man/tesk-convert.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
  install(FILES packaging/tesk.bash RENAME tesk-convert
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
  install(FILES packaging/tesk.thumbnailer DESTINATION "${CMAKE_INSTALL_DATADIR}/thumbnailers")
endif()

# The pages for users. They keep their places beside each other, so that links between them hold.
install(FILES README.md LICENSE CHANGELOG.md SECURITY.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(FILES docs/archives.md docs/browser.md docs/comparison.md docs/convert.md docs/format.md docs/hdf5.md
  docs/install.md docs/limits.md docs/python.md docs/questions.md docs/quirks.md docs/tool.md docs/trailer.md DESTINATION "${CMAKE_INSTALL_DOCDIR}/docs")
install(DIRECTORY docs/images DESTINATION "${CMAKE_INSTALL_DOCDIR}/docs")
install(FILES docs/man/tesk.5 DESTINATION "${CMAKE_INSTALL_MANDIR}/man5")
install(FILES packaging/tesk-mime.xml RENAME tesk.xml
  DESTINATION "${CMAKE_INSTALL_DATADIR}/mime/packages")
# file(1) has no folder for those of others: tesk(5) says how it is told.
install(FILES packaging/tesk.magic DESTINATION "${CMAKE_INSTALL_DATADIR}/tesk")

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)
list(TRANSFORM TESK_LIBRARY_KINDS PREPEND tesk_ OUTPUT_VARIABLE libraries)
install(TARGETS ${libraries} EXPORT teskTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(FILES ${TESK_PUBLIC_HEADERS} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/tesk")

# The HDF5 filter is loaded by others: nothing is linked with it.
if(TARGET tesk_hdf5)
  install(TARGETS tesk_hdf5 LIBRARY DESTINATION "${TESK_HDF5_PLUGIN_FOLDER}" COMPONENT hdf5)
  install(FILES hdf5/tesk_hdf5.h DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/tesk")
endif()

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/tesk")
install(EXPORT teskTargets NAMESPACE tesk:: DESTINATION "${package_folder}")
# Not at the top of the build: that folder may be in PATH, where find_package looks for packages.
set(made_for_package "${PROJECT_BINARY_DIR}/package")
configure_package_config_file(cmake/teskConfig.cmake.in "${made_for_package}/teskConfig.cmake"
  INSTALL_DESTINATION "${package_folder}" NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${made_for_package}/teskConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${made_for_package}/teskConfig.cmake" "${made_for_package}/teskConfigVersion.cmake"
  DESTINATION "${package_folder}")

install(FILES docs/embedding.md DESTINATION "${CMAKE_INSTALL_DOCDIR}/docs")
# Examples for Python stay in the sources, where its module comes from.
install(DIRECTORY examples DESTINATION "${CMAKE_INSTALL_DOCDIR}" PATTERN python EXCLUDE)

# pkg-config finds the prefix from where tesk.pc stands, so the installed tree may be moved. Folders
# that were given as absolute paths stay where they are.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(pc_prefix "${CMAKE_INSTALL_PREFIX}")
else()
  file(RELATIVE_PATH prefix_from_pc "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
  set(pc_prefix "\${pcfiledir}/${prefix_from_pc}")
endif()
set(pc_libdir "\${prefix}")
cmake_path(APPEND pc_libdir "${CMAKE_INSTALL_LIBDIR}")
set(pc_includedir "\${prefix}")
cmake_path(APPEND pc_includedir "${CMAKE_INSTALL_INCLUDEDIR}")
# A shared library knows what it needs; a program that links the static one must name it.
set(pc_libs_private "-lstdc++ -lm")
set(pc_libs "")
if(NOT "shared" IN_LIST TESK_LIBRARY_KINDS)
  set(pc_libs " ${pc_libs_private}")
endif()
configure_file(cmake/tesk.pc.in tesk.pc @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/tesk.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

# One manual page for the library; each function that is exported leads to it.
install(FILES docs/man/libtesk.3 DESTINATION "${CMAKE_INSTALL_MANDIR}/man3")
file(STRINGS cmake/tesk.map.in functions REGEX "^ +tesk_[a-z_]+;$")
foreach(function IN LISTS functions)
  string(REGEX MATCH "tesk_[a-z_]+" name "${function}")
  file(WRITE "${PROJECT_BINARY_DIR}/man3/${name}.3" ".so man3/libtesk.3\n")
  install(FILES "${PROJECT_BINARY_DIR}/man3/${name}.3" DESTINATION "${CMAKE_INSTALL_MANDIR}/man3")
endforeach()

include(CMakePackageConfigHelpers)

install(TARGETS tesk RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(TARGETS tesk_shared tesk_static EXPORT teskTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(FILES ${TESK_PUBLIC_HEADERS} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/tesk")
install(DIRECTORY docs/man/ DESTINATION "${CMAKE_INSTALL_MANDIR}/man3" FILES_MATCHING PATTERN "*.3")

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/tesk")
install(EXPORT teskTargets NAMESPACE tesk:: DESTINATION "${package_folder}")
configure_package_config_file(cmake/teskConfig.cmake.in teskConfig.cmake
  INSTALL_DESTINATION "${package_folder}" NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(teskConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/teskConfig.cmake" "${PROJECT_BINARY_DIR}/teskConfigVersion.cmake"
  DESTINATION "${package_folder}")

# pkg-config finds the prefix from where tesk.pc stands, so the installed tree may be moved.
file(RELATIVE_PATH prefix_from_pc "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file(cmake/tesk.pc.in tesk.pc @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/tesk.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

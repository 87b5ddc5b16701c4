# The libraries that other programs link: one shared, one static, from the same objects.

include(GNUInstallDirs)

set(TESK_PUBLIC_HEADERS
  src/api/tesk.h
  src/api/Version.h
  src/api/ITeskCompressor.h
  src/api/ITeskDecompressor.h
  src/api/CTeskCompressor.h
  src/api/CTeskDecompressor.h
  src/api/ExactCompression.h
  src/container/TKHeader.h
  src/bitstream/Status.h)

# In the build tree the headers stand as they will be installed: <tesk/tesk.h>.
foreach(header IN LISTS TESK_PUBLIC_HEADERS)
  get_filename_component(name "${header}" NAME)
  file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/include/tesk")
  file(CREATE_LINK "${PROJECT_SOURCE_DIR}/${header}" "${PROJECT_BINARY_DIR}/include/tesk/${name}"
       SYMBOLIC)
endforeach()

add_library(tesk_shared SHARED $<TARGET_OBJECTS:tesk_codec>)
add_library(tesk_static STATIC $<TARGET_OBJECTS:tesk_codec>)
foreach(kind IN ITEMS shared static)
  target_include_directories(tesk_${kind} INTERFACE
    $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  set_target_properties(tesk_${kind} PROPERTIES
    OUTPUT_NAME tesk EXPORT_NAME ${kind} LINKER_LANGUAGE CXX)
  add_library(tesk::${kind} ALIAS tesk_${kind})
endforeach()
add_library(tesk::tesk ALIAS tesk_shared)

configure_file(cmake/tesk.map.in tesk.map @ONLY)
target_link_options(tesk_shared PRIVATE
  "LINKER:--version-script=${PROJECT_BINARY_DIR}/tesk.map")
set_target_properties(tesk_shared PROPERTIES
  VERSION ${PROJECT_VERSION}
  SOVERSION ${PROJECT_VERSION_MAJOR}
  LINK_DEPENDS "${PROJECT_BINARY_DIR}/tesk.map")
# A program in C that links the static library needs these two by name.
target_link_libraries(tesk_static INTERFACE stdc++ m)

# The libraries that other programs link: one shared, one static, from the same objects. tesk::tesk is the
# shared one. BUILD_SHARED_LIBS chooses one of them: it is tesk::tesk, and the other is not installed and
# only built for those who link it by its own name.

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

# wasm32 has no shared libraries.
set(kinds shared static)
get_property(has_shared_libraries GLOBAL PROPERTY TARGET_SUPPORTS_SHARED_LIBS)
if(NOT has_shared_libraries)
  set(kinds static)
endif()

set(TESK_LIBRARY_KINDS ${kinds})
if(has_shared_libraries AND BUILD_SHARED_LIBS)
  set(TESK_LIBRARY_KINDS shared)
elseif(DEFINED BUILD_SHARED_LIBS)
  set(TESK_LIBRARY_KINDS static)
endif()

foreach(kind IN LISTS kinds)
  string(TOUPPER "${kind}" type)
  add_library(tesk_${kind} ${type} $<TARGET_OBJECTS:tesk_codec>)
  target_include_directories(tesk_${kind} INTERFACE
    $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  set_target_properties(tesk_${kind} PROPERTIES
    OUTPUT_NAME tesk EXPORT_NAME ${kind} LINKER_LANGUAGE CXX)
  add_library(tesk::${kind} ALIAS tesk_${kind})
  # Within another project only what its programs link is built, unless it is installed.
  if(NOT kind IN_LIST TESK_LIBRARY_KINDS OR NOT (PROJECT_IS_TOP_LEVEL OR TESK_INSTALL))
    set_target_properties(tesk_${kind} PROPERTIES EXCLUDE_FROM_ALL ON)
  endif()
endforeach()
list(GET TESK_LIBRARY_KINDS 0 kind_of_tesk)
add_library(tesk::tesk ALIAS tesk_${kind_of_tesk})

if(has_shared_libraries)
  configure_file(cmake/tesk.map.in tesk.map @ONLY)
  target_link_options(tesk_shared PRIVATE
    "LINKER:--version-script=${PROJECT_BINARY_DIR}/tesk.map")
  set_target_properties(tesk_shared PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    LINK_DEPENDS "${PROJECT_BINARY_DIR}/tesk.map")
endif()
# A program in C that links the static library needs these two by name.
target_link_libraries(tesk_static INTERFACE stdc++ m)

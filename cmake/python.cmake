# The Python module, staged in the build tree as it will be installed: PYTHONPATH=build/dev/python finds it.
# Users do not need this: pip builds the module by itself, see docs/python.md.

if(NOT TESK_BUILD_PYTHON)
  return()
endif()
find_package(Python3 3.9 REQUIRED COMPONENTS Interpreter)
set(TESK_PYTHON_STAGE "${PROJECT_BINARY_DIR}/python")
set(python_source "${PROJECT_SOURCE_DIR}/python")
file(GLOB python_files CONFIGURE_DEPENDS "${python_source}/*.py" "${python_source}/src/tesk/*.py")

# The flags of the build, so that a module with the sanitizers can be made.
string(TOUPPER "CMAKE_CXX_FLAGS_${CMAKE_BUILD_TYPE}" flags_name)
add_custom_command(OUTPUT "${TESK_PYTHON_STAGE}/stamp"
  COMMAND ${CMAKE_COMMAND} -E env
    "TESK_BUILD_TREE=${PROJECT_BINARY_DIR}" "CC=${CMAKE_C_COMPILER}" "CFLAGS=${${flags_name}}"
    "LDFLAGS=${${flags_name}}" "LDSHARED=${CMAKE_C_COMPILER} -shared"
    "${Python3_EXECUTABLE}" -B setup.py --quiet build
    --build-base "${PROJECT_BINARY_DIR}/python-build" --build-lib "${TESK_PYTHON_STAGE}"
  COMMAND ${CMAKE_COMMAND} -E touch "${TESK_PYTHON_STAGE}/stamp"
  WORKING_DIRECTORY "${python_source}"
  DEPENDS tesk_static ${python_files}
  COMMENT "Building the Python module"
  VERBATIM)
add_custom_target(tesk_python ALL DEPENDS "${TESK_PYTHON_STAGE}/stamp")

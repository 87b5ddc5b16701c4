# The Python module, staged in the build tree as it will be installed: PYTHONPATH=build/dev/python finds it.
# Users do not need this: pip builds the module by itself, see docs/python.md.

if(NOT TESK_BUILD_PYTHON)
  return()
endif()
# Debian's interpreter, which has the modules of Debian's packages; another may come first in PATH.
find_program(TESK_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH REQUIRED)
set(TESK_PYTHON_STAGE "${PROJECT_BINARY_DIR}/python")
set(python_source "${PROJECT_SOURCE_DIR}/python")
file(GLOB python_files CONFIGURE_DEPENDS
  "${python_source}/*.py" "${python_source}/pyproject.toml" "${python_source}/setup.cfg" "${python_source}/src/tesk/*.*")

# The flags of the build, so that a module with the sanitizers can be made.
string(TOUPPER "CMAKE_CXX_FLAGS_${CMAKE_BUILD_TYPE}" flags_name)
add_custom_command(OUTPUT "${TESK_PYTHON_STAGE}/stamp"
  # Modules that are gone would stay.
  COMMAND ${CMAKE_COMMAND} -E rm -rf "${TESK_PYTHON_STAGE}" "${PROJECT_BINARY_DIR}/python-build"
  COMMAND ${CMAKE_COMMAND} -E env
    "TESK_BUILD_TREE=${PROJECT_BINARY_DIR}" "CC=${CMAKE_C_COMPILER}" "CFLAGS=${${flags_name}}"
    "LDFLAGS=${${flags_name}}" "LDSHARED=${CMAKE_C_COMPILER} -shared"
    "${TESK_PYTHON}" -B setup.py --quiet
    build --build-base "${PROJECT_BINARY_DIR}/python-build" --build-lib "${TESK_PYTHON_STAGE}"
    egg_info --egg-base "${TESK_PYTHON_STAGE}"
  COMMAND ${CMAKE_COMMAND} -E touch "${TESK_PYTHON_STAGE}/stamp"
  WORKING_DIRECTORY "${python_source}"
  DEPENDS tesk_static ${python_files}
  COMMENT "Building the Python module"
  VERBATIM)
add_custom_target(tesk_python ALL DEPENDS "${TESK_PYTHON_STAGE}/stamp")

if(NOT TESK_BUILD_TESTS)
  return()
endif()
# A module with the sanitizer of clang needs its runtime before all else; the interpreter has leaks of its own.
set(module_environment "PYTHONPATH=${TESK_PYTHON_STAGE}" "PYTHONDONTWRITEBYTECODE=1")
if("${CMAKE_CXX_FLAGS} ${${flags_name}}" MATCHES "-fsanitize=address")
  execute_process(COMMAND "${CMAKE_C_COMPILER}" -print-file-name=libclang_rt.asan-x86_64.so
    OUTPUT_VARIABLE asan_runtime OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  list(APPEND module_environment "LD_PRELOAD=${asan_runtime}" "ASAN_OPTIONS=detect_leaks=0")
elseif(TARGET tesk_convert)
  list(APPEND module_environment "TESK_TOOLS=${PROJECT_BINARY_DIR}")
endif()
add_test(NAME docs.python COMMAND "${TESK_PYTHON}" "${PROJECT_SOURCE_DIR}/tests/docs/python" "${PROJECT_SOURCE_DIR}")
add_test(NAME module.tests COMMAND "${TESK_PYTHON}" -m pytest -q -c pyproject.toml tests
  WORKING_DIRECTORY "${python_source}")
add_test(NAME module.types COMMAND "${TESK_PYTHON}" -m mypy --cache-dir "${PROJECT_BINARY_DIR}/mypy"
  WORKING_DIRECTORY "${python_source}")
set_tests_properties(module.types PROPERTIES TIMEOUT 120 LABELS python)
set_tests_properties(module.tests docs.python PROPERTIES
  TIMEOUT 300 LABELS python ENVIRONMENT "${module_environment}")

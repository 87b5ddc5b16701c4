# The processors that tesk runs on. src/bitstream/WordBytes.h asks again, for builds without CMake.
if(CMAKE_CXX_BYTE_ORDER STREQUAL "BIG_ENDIAN")
  message(FATAL_ERROR "tesk does not run on big-endian processors: it needs a little-endian one of 64 bits, "
    "or wasm32.")
endif()
if(CMAKE_SIZEOF_VOID_P LESS 8 AND NOT CMAKE_SYSTEM_NAME MATCHES "Emscripten|WASI")
  message(FATAL_ERROR "tesk does not run on processors of 32 bits: it needs a little-endian one of 64 bits, "
    "or wasm32.")
endif()

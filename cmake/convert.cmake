# The program tesk-convert, which needs libraries that the codec does not: libpng, libtiff and CLI11.

if(NOT TESK_BUILD_TOOLS OR (NOT TESK_BUILD_CONVERT AND NOT TESK_BUILD_CONVERT STREQUAL "found"))
  return()
endif()
if(TESK_BUILD_CONVERT STREQUAL "found")
  set(how QUIET)
else()
  set(how REQUIRED)
endif()
find_package(PNG ${how})
find_package(TIFF 4.5 ${how})
find_package(CLI11 CONFIG ${how})
find_package(Threads ${how})
if(NOT PNG_FOUND OR NOT TIFF_FOUND OR NOT CLI11_FOUND OR NOT Threads_FOUND)
  message(STATUS "tesk-convert is not built: it needs libpng, libtiff 4.5 and CLI11")
  return()
endif()

add_library(tesk_conversion OBJECT EXCLUDE_FROM_ALL
  src/convert/CConvertReport.cpp
  src/convert/CConvertTotals.cpp
  src/convert/CConverter.cpp
  src/convert/CInputFile.cpp
  src/convert/CInterruption.cpp
  src/convert/COutputFile.cpp
  src/convert/CPngSource.cpp
  src/convert/CTeskCodec.cpp
  src/convert/CTextCursor.cpp
  src/convert/CTiffFile.cpp
  src/convert/ConvertArguments.cpp
  src/convert/ConvertBatch.cpp
  src/convert/ConvertHelp.cpp
  src/convert/ConvertOptions.cpp
  src/convert/ConvertOutput.cpp
  src/convert/ConvertPlan.cpp
  src/convert/DecodeImage.cpp
  src/convert/FileFormat.cpp
  src/convert/ImageChecks.cpp
  src/convert/ImageReading.cpp
  src/convert/ImageWriting.cpp
  src/convert/LostPart.cpp
  src/convert/MosaicCost.cpp
  src/convert/NpyHead.cpp
  src/convert/NpyReader.cpp
  src/convert/OutputName.cpp
  src/convert/PartFiles.cpp
  src/convert/PlainWriters.cpp
  src/convert/PngMetadata.cpp
  src/convert/PngReader.cpp
  src/convert/PngWriter.cpp
  src/convert/PnmHead.cpp
  src/convert/PnmReader.cpp
  src/convert/RawFile.cpp
  src/convert/SampleNotes.cpp
  src/convert/Samples.cpp
  src/convert/TeskFile.cpp
  src/convert/Thumbnail.cpp
  src/convert/TiffLayout.cpp
  src/convert/TiffMetadata.cpp
  src/convert/TiffReader.cpp
  src/convert/TiffWriter.cpp
  src/convert/TrailerBoxes.cpp
  src/convert/Utf8.cpp)
set_target_properties(tesk_conversion PROPERTIES CXX_EXTENSIONS OFF)
target_link_libraries(tesk_conversion PUBLIC
  tesk_settings tesk_trailer PNG::PNG TIFF::TIFF CLI11::CLI11 Threads::Threads)
precompile_standard_headers(tesk_conversion)
# Half of the time of all others together when it is optimised, and smaller when it is not.
set_source_files_properties(src/convert/ConvertArguments.cpp PROPERTIES
  COMPILE_OPTIONS "-Os;${cold_options}" SKIP_PRECOMPILE_HEADERS ON)

add_executable(tesk_convert src/convert/tesk_convert.cpp)
set_target_properties(tesk_convert PROPERTIES OUTPUT_NAME tesk-convert)
target_link_libraries(tesk_convert PRIVATE tesk_conversion tesk_words tesk_trailer tesk_codec)

#pragma once

#include <optional>
#include <string_view>

#include "convert/Buffer.h"

namespace qmx {

enum class FileFormat { stream, pbm, pgm, ppm, pnm, pam, png, tiff, npy, raw };

/// Returns: the format of a file by its first bytes, one of stream, pnm, pam, png, tiff and npy.
/// Throws: Refusal where it is another, in words that say what to do.
FileFormat formatOfContent(ByteView file);

/// Whether a file that begins so is a stream of tesk.
bool isStream(ByteView head);
inline constexpr std::size_t kStreamHeadBytes = 16;

/// Returns: the format with that ending of names, in small letters: "tif". Nothing for an unknown one.
std::optional<FileFormat> formatOfEnding(std::string_view ending);

/// Returns: the format that ends a name, as "scan.tif" and "SCAN.TIFF"; nothing for an unknown end.
std::optional<FileFormat> formatOfName(std::string_view name);

/// Takes "png:" from the front of an output. Returns: nothing where there is no format in front.
std::optional<FileFormat> takeFormat(std::string_view& output);

}  // namespace qmx

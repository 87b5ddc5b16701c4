#pragma once

#include <cstdio>
#include <string>
#include <tesk/tesk.h>

// What the programs of bench/ print for tools/bench-figures.

namespace bench {

/// Returns: text between quotes, as JSON has it. Requires: no control characters.
inline std::string jsonText(const std::string& text) {
    std::string quoted = "\"";
    for (const char letter : text) {
        if (letter == '"' || letter == '\\') quoted += '\\';
        quoted += letter;
    }
    return quoted + '"';
}

/// Prints the members that say what a picture is, and a comma.
inline void printJsonImage(const std::string& name, const tesk_image& image) {
    std::printf(
        "\"name\": %s, \"width\": %u, \"height\": %u, \"bytesPerPixel\": %u, \"bitsPerPixel\": "
        "%u, ",
        jsonText(name).c_str(), image.width, image.height, image.bytes_per_pixel,
        image.bits_per_pixel);
}

}  // namespace bench

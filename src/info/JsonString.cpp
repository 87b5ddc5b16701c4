#include "info/JsonString.h"

#include <bit>
#include <cstdint>
#include <cstdio>

namespace qmx {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// Returns: the bytes of the UTF-8 character at the front of text, 0 when there is none. Requires:
/// text is not empty.
std::size_t characterBytes(std::string_view text) {
    const auto first = static_cast<unsigned char>(text[0]);
    if (first < 0x80) return 1;
    const auto bytes = static_cast<std::size_t>(std::countl_one(first));
    if (bytes < 2 || bytes > 4 || bytes > text.size()) return 0;
    std::uint32_t code = first & (0x7FU >> bytes);
    for (std::size_t i = 1; i < bytes; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0U) != 0x80) return 0;
        code = code << 6 | (next & 0x3FU);
    }
    // Longer than needed, half of a pair, or beyond the last character.
    constexpr std::uint32_t kLeast[] = {0x80, 0x800, 0x10000};
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    return code < kLeast[bytes - 2] || isSurrogate || code > 0x10FFFF ? 0 : bytes;
}

std::string escaped(char character) {
    char text[8];
    std::snprintf(text, sizeof text, "\\u%04x", static_cast<unsigned>(character));
    return text;
}

}  // namespace

std::string jsonString(std::string_view text) {
    std::string json = "\"";
    while (!text.empty()) {
        const std::size_t bytes = characterBytes(text);
        const char first = text[0];
        if (bytes == 0) {
            json += kReplacement;
        } else if (first == '"' || first == '\\') {
            json += {'\\', first};
        } else if (bytes == 1 && (first < ' ' || first == '\x7F')) {
            json += escaped(first);
        } else {
            json += text.substr(0, bytes);
        }
        text.remove_prefix(bytes == 0 ? 1 : bytes);
    }
    return json + '"';
}

}  // namespace qmx

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
    std::snprintf(text, sizeof text, "\\u%04x",
                  static_cast<unsigned>(static_cast<unsigned char>(character)));
    return text;
}

/// Returns: whether the front of text, a character of so many bytes or one that is no UTF-8 (0), is a
/// control character, U+0000 to U+001F or U+007F to U+009F, also as a byte of an 8-bit code.
bool isControl(std::string_view text, std::size_t bytes) {
    const auto last = static_cast<unsigned char>(text[bytes == 2 ? 1 : 0]);
    if (bytes == 2) return text[0] == '\xC2' && last < 0xA0;
    return bytes < 2 && (last < 0x20 || (last >= 0x7F && last < 0xA0));
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

std::string onOneLine(std::string_view text) {
    std::string line;
    while (!text.empty()) {
        const std::size_t bytes = characterBytes(text);
        const std::size_t taken = bytes == 0 ? 1 : bytes;
        if (isControl(text, bytes)) {
            line += escaped(text[taken - 1]);
        } else {
            line += text.substr(0, taken);
        }
        text.remove_prefix(taken);
    }
    return line;
}

}  // namespace qmx

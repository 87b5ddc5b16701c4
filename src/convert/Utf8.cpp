#include "convert/Utf8.h"

namespace qmx {
namespace {

/// Returns: how many bytes follow the first one of a character; 4 where none begins so.
unsigned bytesBehind(unsigned char first) {
    if (first < 0x80) return 0;
    if (first >= 0xC2 && first < 0xE0) return 1;
    if (first >= 0xE0 && first < 0xF0) return 2;
    if (first >= 0xF0 && first < 0xF5) return 3;
    return 4;
}

}  // namespace

std::string latin1ToUtf8(const std::string& text) {
    std::string utf8;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            utf8 += c;
        } else {
            utf8 += static_cast<char>(0xC0 | (byte >> 6));
            utf8 += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return utf8;
}

bool isUtf8(const std::string& text) {
    unsigned expected = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (expected > 0) {
            if ((byte & 0xC0) != 0x80) return false;
            --expected;
        } else {
            expected = bytesBehind(byte);
            if (expected > 3) return false;
        }
    }
    return expected == 0;
}

}  // namespace qmx

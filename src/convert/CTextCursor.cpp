#include "convert/CTextCursor.h"

#include <charconv>

namespace qmx {
namespace {

constexpr std::size_t kLongestWord = 64;

bool isSpace(unsigned char byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

}  // namespace

void CTextCursor::skipSpace() {
    while (next < text.size()) {
        if (text[next] == '#') {
            sawComment = true;
            line();
        } else if (isSpace(text[next])) {
            ++next;
        } else {
            return;
        }
    }
}

std::string CTextCursor::word() {
    skipSpace();
    std::string taken;
    while (next < text.size() && !isSpace(text[next]) && text[next] != '#' &&
           taken.size() < kLongestWord)
        taken += static_cast<char>(text[next++]);
    return taken;
}

std::optional<std::uint64_t> CTextCursor::number(std::uint64_t limit) {
    const std::string digits = word();
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    const bool isNumber = error == std::errc() && end == digits.data() + digits.size();
    if (!isNumber || value > limit) return std::nullopt;
    return value;
}

std::string CTextCursor::line() {
    std::string taken;
    while (next < text.size() && text[next] != '\n') {
        if (taken.size() < kLongestWord) taken += static_cast<char>(text[next]);
        ++next;
    }
    if (next < text.size()) ++next;
    return taken;
}

bool CTextCursor::separator() {
    if (next >= text.size() || !isSpace(text[next])) return false;
    ++next;
    return true;
}

char CTextCursor::character() {
    skipSpace();
    return next < text.size() ? static_cast<char>(text[next++]) : '\0';
}

}  // namespace qmx

#include "convert/NpyHead.h"

#include <charconv>
#include <optional>
#include <string_view>

#include "convert/Refusal.h"

namespace qmx {
namespace {

constexpr std::size_t kMagicBytes = 6;
constexpr std::size_t kVersionBytes = 2;
/// No array of an image needs more: NumPy itself makes 128 bytes of it.
constexpr std::size_t kLongestText = 10'000;
constexpr std::size_t kMostSides = 32;

[[noreturn]] void refuseDamage(const char* what) {
    throw Refusal{std::string("is a damaged NPY: ") + what};
}

/// Returns: what stands behind 'name': in a Python dictionary of simple values.
std::string_view valueOf(std::string_view text, std::string_view name) {
    for (const char quote : {'\'', '"'}) {
        const std::string key = quote + std::string(name) + quote;
        std::size_t at = text.find(key);
        if (at == std::string_view::npos) continue;
        at = text.find_first_not_of(' ', at + key.size());
        if (at == std::string_view::npos || text[at] != ':') break;
        at = text.find_first_not_of(' ', at + 1);
        if (at != std::string_view::npos) return text.substr(at);
    }
    refuseDamage("its head lacks a value");
}

std::string typeOf(std::string_view value) {
    if (value.starts_with('[')) throw Refusal{"has records; a stream holds gray or RGB"};
    const std::size_t end = value.size() < 2 ? std::string_view::npos : value.find(value[0], 1);
    const bool isString = value[0] == '\'' || value[0] == '"';
    if (!isString || end == std::string_view::npos) refuseDamage("its type is no string");
    return std::string(value.substr(1, end - 1));
}

std::vector<std::uint64_t> shapeOf(std::string_view value) {
    std::vector<std::uint64_t> shape;
    const std::size_t end = value.find(')');
    if (value[0] != '(' || end == std::string_view::npos) refuseDamage("its shape is no tuple");
    value = value.substr(1, end - 1);
    while (true) {
        const std::size_t at = value.find_first_not_of(", ");
        if (at == std::string_view::npos) return shape;
        value.remove_prefix(at);
        std::uint64_t side = 0;
        const auto [next, error] = std::from_chars(value.data(), value.data() + value.size(), side);
        if (error != std::errc() || shape.size() == kMostSides)
            refuseDamage("its shape has no number");
        shape.push_back(side);
        value.remove_prefix(static_cast<std::size_t>(next - value.data()));
    }
}

/// Returns: the text of the head; startByte behind it.
std::string_view textOf(ByteView file, std::size_t& startByte) {
    if (file.size() < kMagicBytes + kVersionBytes + 4) refuseDamage("its head has no end");
    const unsigned version = file[kMagicBytes];
    if (version < 1 || version > 3) refuseDamage("its version is unknown");
    const std::size_t lengthBytes = version == 1 ? 2 : 4;
    const std::size_t textAt = kMagicBytes + kVersionBytes + lengthBytes;
    std::size_t length = 0;
    for (std::size_t i = lengthBytes; i > 0; --i)
        length = 256 * length + file[kMagicBytes + kVersionBytes + i - 1];
    if (length > kLongestText || length > file.size() - textAt) refuseDamage("its head has no end");
    startByte = textAt + length;
    return {reinterpret_cast<const char*>(file.data()) + textAt, length};
}

}  // namespace

NpyHead readNpyHead(ByteView file) {
    NpyHead head;
    const std::string_view text = textOf(file, head.startByte);
    head.type = typeOf(valueOf(text, "descr"));
    head.shape = shapeOf(valueOf(text, "shape"));
    head.isFortranOrder = valueOf(text, "fortran_order").starts_with("True");
    return head;
}

}  // namespace qmx

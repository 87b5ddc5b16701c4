#include "convert/PnmHead.h"

#include <limits>

#include "convert/Refusal.h"

namespace qmx {
namespace {

constexpr std::uint64_t kLargestMaxValue = 65535;

std::uint64_t requireNumber(CTextCursor& text, const char* what,
                            std::uint64_t limit = std::numeric_limits<std::uint32_t>::max()) {
    const auto number = text.number(limit);
    if (!number) throw Refusal{std::string("is a damaged PNM: no ") + what};
    return *number;
}

std::uint64_t requireMaxValue(CTextCursor& text) {
    const std::uint64_t value =
        requireNumber(text, "maximum value from 1 to 65535", kLargestMaxValue);
    if (value == 0) throw Refusal{"is a damaged PNM: its maximum value is 0"};
    return value;
}

/// What DEPTH and TUPLTYPE of a PAM file mean.
void nameChannels(PnmHead& head, const std::string& tupleType) {
    const bool isKnown = tupleType.empty() || tupleType.starts_with("BLACKANDWHITE") ||
                         tupleType.starts_with("GRAYSCALE") || tupleType.starts_with("RGB");
    if (!isKnown || head.channels == 0 || head.channels > 4) {
        const std::string channels = std::to_string(head.channels) + " channels";
        head.otherColours = isKnown ? "an image of " + channels : tupleType;
    }
    head.hasAlpha = head.channels == 2 || head.channels == 4;
}

PnmHead readPamHead(CTextCursor& text) {
    PnmHead head;
    head.channels = 0;
    head.maxValue = 0;
    std::string tupleType;
    for (std::string word = text.word(); word != "ENDHDR"; word = text.word()) {
        if (word == "WIDTH") {
            head.width = requireNumber(text, "width");
        } else if (word == "HEIGHT") {
            head.height = requireNumber(text, "height");
        } else if (word == "DEPTH") {
            head.channels = requireNumber(text, "depth");
        } else if (word == "MAXVAL") {
            head.maxValue = requireMaxValue(text);
        } else if (word == "TUPLTYPE") {
            tupleType = text.word();
        } else {
            throw Refusal{word.empty()
                              ? "is a damaged PAM: its head has no end"
                              : "is a damaged PAM: its head has a line that is none of PAM"};
        }
    }
    if (head.maxValue == 0) throw Refusal{"is a damaged PAM: no maximum value"};
    nameChannels(head, tupleType);
    return head;
}

}  // namespace

PnmHead readPnmHead(char digit, CTextCursor& text) {
    if (digit == '7') {
        PnmHead head = readPamHead(text);
        if (!text.separator()) throw Refusal{"is a damaged PAM: its head has no end"};
        return head;
    }
    PnmHead head;
    head.isPlain = digit <= '3';
    head.isBitmap = digit == '1' || digit == '4';
    head.channels = digit == '3' || digit == '6' ? 3 : 1;
    head.width = requireNumber(text, "width");
    head.height = requireNumber(text, "height");
    if (!head.isBitmap) head.maxValue = requireMaxValue(text);
    if (!text.separator()) throw Refusal{"is a damaged PNM: its head has no end"};
    return head;
}

}  // namespace qmx

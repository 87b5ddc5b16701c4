#include "convert/PnmReader.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "convert/ImageChecks.h"
#include "convert/PnmHead.h"
#include "convert/Refusal.h"
#include "convert/Samples.h"

namespace qmx {
namespace {

bool beginsImage(ByteView bytes) {
    return bytes.size() >= 2 && bytes[0] == 'P' && bytes[1] >= '1' && bytes[1] <= '7';
}

[[noreturn]] void refuseSeveral() {
    throw Refusal{"has several images; a stream holds one: pamsplit makes files of them"};
}

/// What stands behind an image is another one, or nothing that PNM knows.
void lookBehindPlain(ImageFile& image, CTextCursor& text) {
    const std::string word = text.word();
    if (beginsImage({reinterpret_cast<const unsigned char*>(word.data()), word.size()}))
        refuseSeveral();
    if (!word.empty()) image.metadata.notKept.push_back({"what stands behind the image", false});
}

void lookBehind(ImageFile& image, std::size_t endByte) {
    const std::size_t behindBytes = image.buffer.sizeBytes - endByte;
    if (behindBytes == 0) return;
    if (beginsImage(image.buffer.view().subspan(endByte))) refuseSeveral();
    image.metadata.notKept.push_back(bytesBehind(behindBytes));
}

/// Requires of a binary image that its rows are there.
void requireRows(ImageFile& image, std::size_t rowBytes, std::size_t height,
                 std::size_t startByte) {
    const std::size_t presentBytes = image.buffer.sizeBytes - startByte;
    if (presentBytes < rowBytes * height) refuseShortPixels(presentBytes, rowBytes, height);
    lookBehind(image, startByte + rowBytes * height);
}

/// Binary samples stay where they are in the file, but for those of bitmaps.
void takeBinary(ImageFile& image, const PnmHead& head, std::size_t start) {
    const std::size_t rowBytes = head.width * head.channels * head.sampleBytes();
    requireRows(image, rowBytes, head.height, start);
    image.pixelsAtByte = start;
    if (head.sampleBytes() == 2) swapSampleBytes(image.pixels(), rowBytes / 2 * head.height);
}

void takeBitmap(ImageFile& image, const PnmHead& head, std::size_t start) {
    const std::size_t packedRowBytes = (head.width + 7) / 8;
    requireRows(image, packedRowBytes, head.height, start);
    Buffer samples(head.width * head.height);
    for (std::size_t r = 0; r < head.height; ++r)
        unpackSamples(image.buffer.bytes.get() + start + r * packedRowBytes, 1,
                      samples.bytes.get() + r * head.width, head.width);
    image.buffer = std::move(samples);
}

/// Takes a decimal number; the digits of bitmaps may stand without space between them. Returns: nothing
/// where there is none.
std::optional<std::uint64_t> takeNumber(CTextCursor& text, const PnmHead& head) {
    if (!head.isBitmap) return text.number(head.maxValue);
    const char digit = text.character();
    if (digit != '0' && digit != '1') return std::nullopt;
    return static_cast<std::uint64_t>(digit - '0');
}

void takePlain(ImageFile& image, const PnmHead& head, CTextCursor& text) {
    const std::size_t rowSamples = head.width * head.channels;
    // Every sample has a character: what is allocated is no more than twice the file.
    if (image.buffer.sizeBytes < rowSamples * head.height)
        throw Refusal{"is a damaged PNM: it ends before its last row"};
    Buffer samples(rowSamples * head.height * head.sampleBytes());
    for (std::size_t i = 0; i < rowSamples * head.height; ++i) {
        const auto value = takeNumber(text, head);
        if (!value && text.isAtEnd()) refuseShortFile(i / rowSamples + 1, head.height);
        if (!value)
            throw Refusal{"is a damaged PNM: no number up to its maximum value in row " +
                          std::to_string(i / rowSamples + 1)};
        unsigned char* sample = samples.bytes.get() + i * head.sampleBytes();
        sample[0] = static_cast<unsigned char>(*value);
        if (head.sampleBytes() == 2) sample[1] = static_cast<unsigned char>(*value >> 8);
    }
    lookBehindPlain(image, text);
    image.buffer = std::move(samples);
}

/// Bitmaps have 1 for black; gray has 0.
void makeWhiteOne(ImageFile& image) {
    unsigned char* samples = image.pixels();
    for (std::size_t i = 0; i < image.rawBytes(); ++i)
        samples[i] ^= 1;
}

void requireKnownChannels(const PnmHead& head, const ReadOptions& options) {
    if (!head.otherColours.empty()) refuseColours(head.otherColours);
    if (head.channels >= 3 && head.sampleBytes() == 2) refuseDeepColour();
    if (head.hasAlpha && !options.leavesOutOpaqueAlpha) refuseAlpha();
}

void leaveOutAlpha(ImageFile& image, const PnmHead& head) {
    // The samples are little-endian by now.
    const unsigned char opaque[] = {static_cast<unsigned char>(head.maxValue),
                                    static_cast<unsigned char>(head.maxValue >> 8)};
    removeOpaqueChannel(image.pixels(), head.width * head.height,
                        head.channels * head.sampleBytes(), {opaque, head.sampleBytes()});
}

void requireValuesInRange(const ImageFile& image, const PnmHead& head) {
    const std::size_t rowSamples = image.sampleCount() / head.height;
    for (std::size_t i = 0; i < image.sampleCount(); ++i)
        if (image.sample(i) > head.maxValue)
            throw Refusal{"is a damaged PNM: a sample above its maximum value " +
                          std::to_string(head.maxValue) + " in row " +
                          std::to_string(i / rowSamples + 1)};
}

void describe(ImageFile& image, const PnmHead& head) {
    const auto maxValue = static_cast<unsigned>(head.maxValue);
    const bool isColour = head.channels >= 3;
    const unsigned ownBits = static_cast<unsigned>(std::bit_width(maxValue));
    const unsigned bits = isColour ? 8 : head.sampleBytes() == 1 ? ownBits : 0;
    setGeometry(image, head.width, head.height, isColour ? 3 : head.sampleBytes(), bits);
    image.metadata.maxValue = maxValue;
    if (!std::has_single_bit(maxValue + 1))
        image.notes.push_back("maximum value " + std::to_string(maxValue) +
                              " is kept in the trailer only");
}

void takeSamples(ImageFile& image, const PnmHead& head, CTextCursor& text) {
    const std::size_t start = text.position();
    if (head.isPlain) {
        takePlain(image, head, text);
    } else if (head.isBitmap) {
        takeBitmap(image, head, start);
    } else {
        takeBinary(image, head, start);
    }
    if (head.isBitmap) makeWhiteOne(image);
}

}  // namespace

ImageFile readPnm(Buffer file, const ReadOptions& options) {
    ImageFile image;
    image.buffer = std::move(file);
    CTextCursor text(image.buffer.view(), 2);
    const PnmHead head = readPnmHead(static_cast<char>(image.buffer.bytes[1]), text);
    requireSides(head.width, head.height, options);
    requireKnownChannels(head, options);
    describe(image, head);
    takeSamples(image, head, text);
    if (head.hasAlpha) leaveOutAlpha(image, head);
    requireValuesInRange(image, head);
    if (text.hasComments()) image.metadata.notKept.push_back({"comments"});
    return image;
}

}  // namespace qmx

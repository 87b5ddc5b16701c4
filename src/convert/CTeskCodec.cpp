#include "convert/CTeskCodec.h"

#include <algorithm>
#include <bit>
#include <new>

#include "convert/Refusal.h"

namespace qmx {
namespace {

[[noreturn]] void refuse(tesk_status status) {
    if (status == TESK_OUT_OF_MEMORY) throw std::bad_alloc();
    if (status == TESK_INVALID_STREAM) throw Refusal{"is a damaged stream"};
    throw Refusal{tesk_status_message(status)};
}

/// Sets the bits to those that the samples have, at least: a stream may declare any number, and formats put so many
/// together.
void settleDeclaredBits(ImageFile& image) {
    const std::uint32_t most = image.geometry.bytes_per_pixel == 2 ? 16 : 8;
    std::uint32_t& bits = image.geometry.bits_per_pixel;
    if (bits == 0 || bits > most) bits = most;
    bits = std::max(bits, static_cast<std::uint32_t>(std::bit_width(usedBitsOf(image))));
}

}  // namespace

CTeskCodec::CTeskCodec() {
    if (tesk_create(nullptr, &codec) != TESK_OK) throw std::bad_alloc();
}

void CTeskCodec::compress(const ImageFile& image, std::size_t budgetBytes, CBlock& block) {
    block.owner = codec;
    const tesk_status status = tesk_compress_to_block(codec, &image.geometry, image.pixels(), 0,
                                                      budgetBytes, &block.block, &block.result);
    if (status == TESK_NOT_RESTORABLE)
        throw Refusal{std::string("has no stream that restores it: ") +
                      tesk_loss_message(block.result.loss)};
    if (status != TESK_OK && status != TESK_CUT) refuse(status);
}

void CTeskCodec::decompress(ByteView stream, std::uint32_t levels, ImageFile& image) {
    tesk_image whole = TESK_IMAGE_INIT;
    tesk_status status = tesk_probe(stream.data(), stream.size(), &whole);
    if (status == TESK_OK) status = tesk_reduced_image(&whole, levels, &image.geometry);
    if (status != TESK_OK) refuse(status);
    image.buffer = Buffer(image.rawBytes());
    status = tesk_decompress_reduced(codec, stream.data(), stream.size(), levels, image.pixels(),
                                     image.rawBytes(), 0, nullptr);
    if (status != TESK_OK && status != TESK_CUT) refuse(status);
    settleDeclaredBits(image);
}

std::uint32_t usedBitsOf(const ImageFile& image) {
    std::uint32_t used = 0;
    const tesk_status status = tesk_used_bits(&image.geometry, image.pixels(), 0, &used);
    if (status != TESK_OK) refuse(status);
    return used;
}

}  // namespace qmx

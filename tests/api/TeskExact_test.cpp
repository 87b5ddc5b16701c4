#include <gtest/gtest.h>

#include "api/ExactCompression.h"
#include "support/CodecCalls.h"
#include "support/CodecObjects.h"

namespace {

using test::Bytes;
using test::Call;
using test::Content;
using test::makeImage;
using test::RawImage;

RawImage flat(int width, int height, unsigned char sample) {
    return {1, 8, width, height, Bytes(static_cast<std::size_t>(width * height), sample)};
}

/// The smallest images that need each rescue, and what the call says of them.
TEST(TeskExact, EveryRescueHasItsNumber) {  // Quirk 18
    RawImage deep = makeImage(Content::noise, 2, 16, 32, 32);
    deep.bitsPerPixel = 9;
    const std::pair<RawImage, std::uint32_t> images[] = {
        {makeImage(Content::photo, 3, 8, 40, 30), 0},
        {makeImage(Content::noise, 1, 8, 2, 4), TESK_RESCUE_THIN_FILTER},
        {deep, TESK_RESCUE_DECLARED_BITS},
        {flat(5, 5, 200), TESK_RESCUE_OTHER_REPRESENTATIVE},
        {{2, 16, 5, 5, Bytes(50, 200)}, TESK_RESCUE_WHOLE_WRAPS},
        {{2, 12, 5, 5, Bytes(50, 7)}, TESK_RESCUE_DECLARED_BITS | TESK_RESCUE_WHOLE_WRAPS}};
    const test::Codec codec = test::makeCodec();
    for (const auto& [image, rescue] : images) {
        const Call call = compressCall(codec.get(), image);
        EXPECT_EQ(call.status, TESK_OK);
        EXPECT_EQ(call.result.rescue, rescue);
        EXPECT_EQ(call.result.loss, TESK_LOSS_NONE);
        EXPECT_EQ(test::decompressCall(codec.get(), call.bytes).bytes, image.bytes);
        const qmx::ExactStream stream = qmx::compressExactly(
            image.width, image.height, image.bitsPerPixel, image.bytesPerPixel, image.bytes.data());
        EXPECT_EQ(stream.bytes, call.bytes);
        EXPECT_EQ(stream.rescues, rescue);
        EXPECT_EQ(stream.exactness, rescue == 0 ? qmx::Exactness::plain : qmx::Exactness::rescued);
    }
}

TEST(TeskExact, ASideOf1IsOutOfReachUnlessAllSamplesAre0) {
    const test::Codec codec = test::makeCodec();
    for (const auto& [width, height] : {std::pair(1, 1), {1, 20}, {20, 1}}) {
        const Call zeros = compressCall(codec.get(), flat(width, height, 0));
        EXPECT_EQ(zeros.status, TESK_OK);
        EXPECT_EQ(test::decompressCall(codec.get(), zeros.bytes).bytes,
                  flat(width, height, 0).bytes);
        RawImage last = flat(width, height, 0);
        last.bytes.back() = 1;
        const Call call = compressCall(codec.get(), last);
        EXPECT_EQ(call.status, TESK_NOT_RESTORABLE);
        EXPECT_EQ(call.result.loss, TESK_LOSS_SIDE_OF_ONE);
        EXPECT_EQ(call.result.stream_bytes, 0U);
        EXPECT_EQ(qmx::compressExactly(width, height, 8, 1, last.bytes.data()).exactness,
                  qmx::Exactness::impossible);
    }
}

TEST(TeskExact, PlainCodecsGiveThePlainStreamWithAndWithoutABudget) {
    const RawImage image = flat(5, 5, 200);
    const Bytes plain = test::compressObject(image).bytes;
    const test::Codec codec = test::makeCodecWithFlags(TESK_PLAIN);
    for (const std::size_t budget : {std::size_t{0}, std::size_t{1000}}) {
        const Call call = compressCall(codec.get(), image, budget);
        EXPECT_EQ(call.status, TESK_OK);
        EXPECT_EQ(call.bytes, plain);
        EXPECT_EQ(call.result.rescue, 0U);
        EXPECT_EQ(call.result.loss, TESK_LOSS_LONG_SECTION);
    }
}

TEST(TeskExact, ABudgetThatCutsNothingGivesTheStreamThatIsMadeWithoutOne) {
    const RawImage image = flat(5, 5, 200);
    const test::Codec codec = test::makeCodec();
    const Call free = compressCall(codec.get(), image);
    const Call budgeted = compressCall(codec.get(), image, free.bytes.size());
    EXPECT_EQ(budgeted.status, TESK_OK);
    EXPECT_EQ(budgeted.bytes, free.bytes);
    EXPECT_EQ(budgeted.result.rescue, TESK_RESCUE_OTHER_REPRESENTATIVE);
    EXPECT_EQ(budgeted.result.loss, TESK_LOSS_NONE);
}

TEST(TeskExact, VerificationChangesNoByte) {
    const RawImage image = flat(5, 5, 200);
    const Call verified = compressCall(test::makeCodec().get(), image);
    const Call unverified = compressCall(test::makeCodecWithFlags(TESK_UNVERIFIED).get(), image);
    EXPECT_EQ(verified.status, TESK_OK);
    EXPECT_EQ(unverified.status, TESK_OK);
    EXPECT_EQ(verified.bytes, unverified.bytes);
    EXPECT_EQ(qmx::compressExactly(5, 5, 8, 1, image.bytes.data(), false).bytes, verified.bytes);
}

TEST(TeskExact, ABufferIsMeasuredByTheRescuedStream) {
    const RawImage image = flat(5, 5, 200);
    const tesk_image geometry = geometryOf(image);
    const test::Codec codec = test::makeCodec();
    tesk_result result = TESK_RESULT_INIT;
    EXPECT_EQ(tesk_compress(codec.get(), &geometry, image.bytes.data(), 0, 0, nullptr, 0, &result),
              TESK_BUFFER_TOO_SMALL);
    EXPECT_EQ(result.rescue, 0U);
    Bytes out(result.stream_bytes);
    EXPECT_EQ(tesk_compress(codec.get(), &geometry, image.bytes.data(), 0, 0, out.data(),
                            out.size(), &result),
              TESK_OK);
    EXPECT_EQ(test::decompressCall(codec.get(), out).bytes, image.bytes);
}

TEST(TeskExact, RowsMayStandApart) {
    const RawImage image = makeImage(Content::noise, 2, 16, 9, 13);
    RawImage declared = image;
    declared.bitsPerPixel = 10;
    const Bytes spread = test::spread(declared, 25, 0xA5);
    const tesk_image geometry = geometryOf(declared);
    const test::Codec codec = test::makeCodec();
    Bytes out(4000);
    tesk_result result = TESK_RESULT_INIT;
    ASSERT_EQ(tesk_compress(codec.get(), &geometry, spread.data(), 25, 0, out.data(), out.size(),
                            &result),
              TESK_OK);
    EXPECT_NE(result.rescue & TESK_RESCUE_DECLARED_BITS, 0U);
    out.resize(result.stream_bytes);
    EXPECT_EQ(test::decompressCall(codec.get(), out).bytes, image.bytes);
}

TEST(TeskExact, UnknownFlagsAreInvalid) {
    tesk_options options = TESK_OPTIONS_INIT;
    options.flags = 4;
    tesk_codec* codec = nullptr;
    EXPECT_EQ(tesk_create(&options, &codec), TESK_INVALID_ARGUMENT);
    EXPECT_EQ(codec, nullptr);
}

TEST(ExactCompression, OtherLayoutsAreUnsupported) {
    const unsigned char pixels[64] = {};
    for (const int bytesPerPixel : {0, 4, 255}) {
        const qmx::ExactStream stream = qmx::compressExactly(4, 4, 8, bytesPerPixel, pixels);
        EXPECT_EQ(stream.exactness, qmx::Exactness::unsupported);
        EXPECT_TRUE(stream.bytes.empty());
    }
}

/// Compresses an image of which a pixel changes at the nth allocation of the call.
Call compressChanging(RawImage image, int n) {
    struct Change {
        unsigned char* pixel;
        int left;
    } change{image.bytes.data(), n};
    tesk_options options = TESK_OPTIONS_INIT;
    options.user = &change;
    options.allocate = [](void* user, std::size_t size) {
        auto* todo = static_cast<Change*>(user);
        if (--todo->left == 0) *todo->pixel ^= 1;
        return std::malloc(size);
    };
    options.release = [](void*, void* memory) { std::free(memory); };
    return compressCall(test::makeCodec(&options).get(), image);
}

TEST(TeskExact, WhatDoesNotComeBackIsNoResult) {
    int refused = 0;
    for (int n = 1; n < 40; ++n) {
        const Call call = compressChanging(makeImage(Content::photo, 1, 8, 40, 30), n);
        if (call.status == TESK_OK) continue;
        ++refused;
        EXPECT_EQ(call.status, TESK_NOT_RESTORABLE);
        EXPECT_EQ(call.result.loss, TESK_LOSS_UNKNOWN);
    }
    EXPECT_GT(refused, 0);
}

}  // namespace

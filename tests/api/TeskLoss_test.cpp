#include <gtest/gtest.h>
#include <set>

#include "exact/ExposedImages.h"
#include "support/CodecCalls.h"

namespace {

using test::Content;
using test::makeImage;
using test::RawImage;

/// Compresses an image to its plain stream and checks that it comes back exactly when no loss is told.
tesk_loss lossOf(const RawImage& image, std::size_t budgetBytes = 0) {
    const test::Codec codec = test::makeCodecWithFlags(TESK_PLAIN);
    const test::Call call = compressCall(codec.get(), image, budgetBytes);
    EXPECT_TRUE(call.isUsable());
    const bool isRestored = test::decompressCall(codec.get(), call.bytes).bytes == image.bytes;
    EXPECT_EQ(call.result.loss == TESK_LOSS_NONE, isRestored);
    return call.result.loss;
}

RawImage flat(int width, int height, unsigned char sample) {
    return {1, 8, width, height, test::Bytes(static_cast<std::size_t>(width * height), sample)};
}

TEST(TeskLoss, EveryReasonHasItsNumber) {
    EXPECT_EQ(lossOf(makeImage(Content::photo, 3, 8, 40, 30)), TESK_LOSS_NONE);
    EXPECT_EQ(lossOf(makeImage(Content::photo, 3, 8, 40, 30), 300), TESK_LOSS_BUDGET);
    EXPECT_EQ(lossOf(flat(1, 1, 200)), TESK_LOSS_SIDE_OF_ONE);
    EXPECT_EQ(lossOf(makeImage(Content::noise, 1, 8, 2, 4)), TESK_LOSS_THIN_IMAGE);
    EXPECT_EQ(lossOf(flat(5, 5, 200)), TESK_LOSS_LONG_SECTION);

    RawImage deep = makeImage(Content::noise, 2, 16, 32, 32);
    EXPECT_EQ(lossOf(deep), TESK_LOSS_NONE);
    deep.bitsPerPixel = 9;
    EXPECT_EQ(lossOf(deep), TESK_LOSS_WRAPPED);
}

TEST(TeskLoss, ACutInFrontOfALongSectionIsThatOfTheBudget) {
    const RawImage image = test::makeBright(test::Bright::nearlyFlat, 1, 8, 9, 13);
    const test::Codec codec = test::makeCodecWithFlags(TESK_PLAIN);
    const std::size_t completeBytes = compressCall(codec.get(), image).bytes.size();
    int opened = 0;
    int refused = 0;
    for (std::size_t budget = 17; budget < completeBytes; ++budget) {
        const test::Call call = compressCall(codec.get(), image, budget);
        const int status = test::decompressCall(codec.get(), call.bytes).status;
        if (call.result.loss == TESK_LOSS_BUDGET) {
            EXPECT_EQ(status, TESK_CUT) << budget;
            ++opened;
        }
        if (status == TESK_INVALID_STREAM) {
            EXPECT_EQ(call.result.loss, TESK_LOSS_LONG_SECTION) << budget;
            ++refused;
        }
    }
    EXPECT_GT(opened, 0);
    EXPECT_GT(refused, 0);
}

TEST(TeskLoss, ZerosComeBackWhateverTheirSize) {
    for (const int side : {1, 2, 3, 8})
        EXPECT_EQ(lossOf(flat(side, 9, 0)), TESK_LOSS_NONE) << side;
}

TEST(TeskLoss, ABufferTooSmallForTheStreamLosesNothing) {
    const RawImage image = flat(5, 5, 200);
    const tesk_image geometry = geometryOf(image);
    const test::Codec codec = test::makeCodec();
    tesk_result result = TESK_RESULT_INIT;
    result.loss = TESK_LOSS_WRAPPED;
    EXPECT_EQ(tesk_compress(codec.get(), &geometry, image.bytes.data(), 0, 0, nullptr, 0, &result),
              TESK_BUFFER_TOO_SMALL);
    EXPECT_EQ(result.loss, TESK_LOSS_NONE);
}

TEST(TeskLoss, EveryNumberHasAMessageOfItsOwn) {
    std::set<std::string> messages;
    for (int loss = TESK_LOSS_NONE; loss <= TESK_LOSS_UNKNOWN + 1; ++loss)
        messages.insert(tesk_loss_message(loss));
    EXPECT_EQ(messages.size(), static_cast<std::size_t>(TESK_LOSS_UNKNOWN) + 2);
    EXPECT_STREQ(tesk_loss_message(-1), tesk_loss_message(TESK_LOSS_UNKNOWN + 1));
}

}  // namespace

#include <cfenv>
#include <gtest/gtest.h>

#include "api/ExactCompression.h"
#include "support/CodecCalls.h"
#include "support/CodecObjects.h"

// The floating-point environment of the caller: no stream depends on it, and no call changes it.

namespace {

using test::Content;
using test::RawImage;

constexpr int kModes[] = {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO};

/// Another rounding mode as long as it lives.
class Mode {
public:
    explicit Mode(int mode) { std::fesetround(mode); }
    ~Mode() { std::fesetround(FE_TONEAREST); }
    Mode(const Mode&) = delete;
    Mode& operator=(const Mode&) = delete;
};

std::vector<RawImage> manyImages() {
    std::vector<RawImage> images;
    for (const auto& [bytesPerPixel, bitsPerPixel] : test::kKindsOfBothProfiles)
        for (const Content content : {Content::noise, Content::photo, Content::gradient})
            for (int i = 0; i < 6; ++i)
                images.push_back(test::makeImage(content, bytesPerPixel, bitsPerPixel, 40 + 9 * i,
                                                 90 - 7 * i, static_cast<std::uint64_t>(i)));
    return images;
}

TEST(Rounding, OfTheCallerChangesNoStream) {
    const test::Codec codec = test::makeCodec();
    for (const RawImage& image : manyImages()) {
        const test::Bytes called = test::compressCall(codec.get(), image).bytes;
        const test::Bytes made = test::compressObject(image).bytes;
        for (const int mode : kModes) {
            const Mode other(mode);
            EXPECT_EQ(test::compressCall(codec.get(), image).bytes, called) << mode;
            EXPECT_EQ(test::compressObject(image).bytes, made) << mode;
        }
    }
}

TEST(Rounding, OfTheCallerStaysAsItIs) {
    const test::Codec codec = test::makeCodec();
    const RawImage image = test::makeImage(Content::photo, 1, 8, 50, 60);
    for (const int mode : kModes) {
        const Mode other(mode);
        std::feclearexcept(FE_ALL_EXCEPT);
        const std::size_t complete = test::compressCall(codec.get(), image).bytes.size();
        EXPECT_EQ(std::fegetround(), mode);
        test::compressCall(codec.get(), image, complete / 2);
        EXPECT_EQ(std::fegetround(), mode) << "after a stream that was cut";
        EXPECT_EQ(std::fetestexcept(FE_INEXACT), 0);
    }
}

TEST(Rounding, ExceptionsThatTheCallerWantsToSeeDoNotStopACall) {
    const test::Codec codec = test::makeCodec();
    const RawImage image = test::makeImage(Content::photo, 1, 8, 50, 60);
    const test::Bytes expected = test::compressCall(codec.get(), image).bytes;
    std::feclearexcept(FE_ALL_EXCEPT);
    feenableexcept(FE_INEXACT | FE_INVALID);
    const test::Call call = test::compressCall(codec.get(), image);
    fedisableexcept(FE_ALL_EXCEPT);
    EXPECT_EQ(call.bytes, expected);
}

}  // namespace

#include "wavelet/OutputConversion.h"

#include <gtest/gtest.h>

#include "coding/decode/CWaveletDecoder.h"
#include "support/Planes.h"
#include "wavelet/CFilter5_3.h"

namespace {

using qmx::CImageData;
using qmx::SampleLimit;
using test::Bytes;

/// Returns: what convertAndCopyToT writes for planes that hold samples, into bytes of 0xCC.
template <class T>
Bytes converted(int width, int planes, const std::vector<T>& samples, int bytesPerPixel, int bits) {
    CImageData<T> image(width, static_cast<int>(samples.size()) / width / planes, planes);
    test::setSamples(image, samples);
    qmx::CFilter5_3<T> filter;
    qmx::CWaveletDecoder<T> decoder(&image, &filter, false);
    Bytes out(samples.size() * 2, 0xCC);
    decoder.convertAndCopyToT(out.data(), bytesPerPixel, bits);
    return out;
}

TEST(SampleLimit, EightBitsLimitShorts) {
    const SampleLimit<short> limit(8);
    EXPECT_EQ(limit.apply(-5), 0);
    EXPECT_EQ(limit.apply(0), 0);
    EXPECT_EQ(limit.apply(255), 255);
    EXPECT_EQ(limit.apply(256), 255);
    EXPECT_EQ(limit.apply(300), 255);
}

TEST(SampleLimit, NoBitsNoLimit) {
    EXPECT_EQ(SampleLimit<short>(0).apply(-7), -7);
    EXPECT_EQ(SampleLimit<int>(-3).apply(1 << 30), 1 << 30);
}

TEST(SampleLimit, WorksInTheWidthOfTheCoefficients) {
    EXPECT_EQ(SampleLimit<short>(16).apply(-1), -1);
    EXPECT_EQ(SampleLimit<short>(20).apply(-1), -1);
    EXPECT_EQ(SampleLimit<short>(15).apply(-1), 0);
    EXPECT_EQ(SampleLimit<short>(15).apply(32767), 32767);
    EXPECT_EQ(SampleLimit<int>(16).apply(70000), 65535);
    EXPECT_EQ(SampleLimit<int>(16).apply(-1), 0);
    EXPECT_EQ(SampleLimit<int>(31).apply(2147483647), 2147483647);
    EXPECT_EQ(SampleLimit<int>(31).apply(-1), 0);
}

TEST(SampleLimit, BitsCountModuloThirtyTwo) {
    EXPECT_EQ(SampleLimit<int>(32).apply(9), 0);
    EXPECT_EQ(SampleLimit<short>(32).apply(9), 0);
    EXPECT_EQ(SampleLimit<int>(40).apply(300), 255);
    EXPECT_EQ(SampleLimit<int>(255).apply(-1), 0);
}

TEST(ConvertAndCopyToT, OneByteSamplesAreClampedOrWrap) {
    const std::vector<short> samples{-1, 4095, 300, 7};
    const Bytes clamped = converted<short>(4, 1, samples, 1, 8);
    EXPECT_EQ(Bytes(clamped.begin(), clamped.begin() + 4), (Bytes{0, 255, 255, 7}));
    EXPECT_EQ(clamped[4], 0xCC);
    const Bytes wrapped = converted<short>(4, 1, samples, 1, 0);
    EXPECT_EQ(Bytes(wrapped.begin(), wrapped.begin() + 4), (Bytes{255, 255, 44, 7}));
}

TEST(ConvertAndCopyToT, TwoByteSamplesAreLittleEndian) {
    EXPECT_EQ(converted<int>(3, 1, {-1, 4096, 0x1234}, 2, 12),
              (Bytes{0, 0, 0xFF, 0x0F, 0xFF, 0x0F}));
    EXPECT_EQ(converted<int>(3, 1, {-1, 70000, 0x1234}, 2, 0),
              (Bytes{0xFF, 0xFF, 0x70, 0x11, 0x34, 0x12}));
}

TEST(ConvertAndCopyToT, PlanesAreInterleavedWithoutColourTransform) {
    const Bytes out = converted<short>(2, 2, {1, 2, 3, 4}, 1, 0);
    EXPECT_EQ(Bytes(out.begin(), out.begin() + 4), (Bytes{1, 3, 2, 4}));
}

TEST(ConvertAndCopyToT, ThreeBytesUndoTheColourTransform) {
    const Bytes out = converted<short>(2, 3, {100, 50, 10, -3, -6, 0}, 3, 0);
    EXPECT_EQ(Bytes(out.begin(), out.begin() + 6), (Bytes{109, 99, 93, 48, 51, 51}));
}

TEST(ConvertAndCopyToT, ColoursAreClampedOneByOne) {
    const Bytes out = converted<short>(1, 3, {250, 100, -300}, 3, 8);
    EXPECT_EQ(Bytes(out.begin(), out.begin() + 3), (Bytes{255, 255, 0}));
}

TEST(ConvertAndCopyToT, WhatDoesNotFitWritesNothing) {
    EXPECT_EQ(converted<short>(2, 1, {1, 2}, 3, 8), Bytes(4, 0xCC));
    EXPECT_EQ(converted<short>(2, 1, {1, 2}, 0, 8), Bytes(4, 0xCC));
    EXPECT_EQ(converted<short>(2, 1, {1, 2}, 4, 8), Bytes(4, 0xCC));
}

}  // namespace

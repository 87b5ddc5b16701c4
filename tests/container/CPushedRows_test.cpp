#include "container/CPushedRows.h"

#include <gtest/gtest.h>

#include "support/LibraryCodec.h"

namespace {

using namespace qmx;
using test::Content;
using test::RawImage;

constexpr test::SampleKind kKinds[] = {{1, 8}, {3, 8}, {2, 12}, {2, 16}};

/// An image whose rows were pushed.
struct Pushed {
    explicit Pushed(const RawImage& image) : header(test::headerOf(image)), rows(header) {
        for (int r = 0; r < image.height; ++r)
            rows.push(image.bytes.data() + static_cast<std::size_t>(r) * header.rawRowBytes());
    }
    bool isSame(const RawImage& image) {
        bool isSame = true;
        for (int r = 0; r < image.height; ++r)
            isSame = rows.isSameRow(
                r, image.bytes.data() + static_cast<std::size_t>(r) * header.rawRowBytes(),
                header.rawRowBytes());
        return isSame;
    }

    TKHeader header;
    CPushedRows rows;
};

TEST(CPushedRows, TellTheImageFromOneWithASingleOtherBit) {
    for (const auto& [bytesPerPixel, bitsPerPixel] : kKinds) {
        RawImage image = test::makeImage(Content::photo, bytesPerPixel, bitsPerPixel, 13, 7);
        Pushed pushed(image);
        EXPECT_TRUE(pushed.isSame(image));
        for (unsigned char& byte : image.bytes)
            for (int bit = 0; bit < 8; ++bit) {
                byte = static_cast<unsigned char>(byte ^ (1 << bit));
                EXPECT_FALSE(pushed.isSame(image));
                byte = static_cast<unsigned char>(byte ^ (1 << bit));
            }
        EXPECT_TRUE(pushed.isSame(image)) << "as often as needed";
        std::swap(image.bytes.front(), image.bytes.back());
        EXPECT_FALSE(pushed.isSame(image));
    }
}

TEST(CPushedRows, KnowTheBitsThatTheirSamplesUse) {
    for (const auto& [bytesPerPixel, bitsPerPixel] : kKinds) {
        RawImage image = test::makeImage(Content::sparse, bytesPerPixel, bitsPerPixel, 13, 7);
        CPixelsInMemory inMemory(image.bytes.data(), test::headerOf(image).rawRowBytes());
        Pushed pushed(image);
        EXPECT_EQ(pushed.rows.usedBits(pushed.header, kNeverStopped),
                  inMemory.usedBits(pushed.header, kNeverStopped));
    }
}

}  // namespace

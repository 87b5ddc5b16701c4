// What the writers write, the readers read, for every kind of image and every format.

#include <gmock/gmock.h>

#include "convert/ConvertTestSupport.h"
#include "convert/ImageReading.h"
#include "convert/ImageWriting.h"

namespace {

using namespace qmx;
using test::Bytes;
using testing::HasSubstr;
using testing::IsEmpty;

/// Returns: an image as a file of that format.
std::string fileOf(const ImageFile& image, FileFormat format, const Metadata& metadata = {}) {
    ImageFile copy =
        test::makeImage(image.geometry.width, image.geometry.height, image.geometry.bytes_per_pixel,
                        image.geometry.bits_per_pixel, test::samplesOf(image));
    copy.metadata = metadata;
    test::CTextSink sink;
    writeImage(copy, format, sink);
    return sink.text;
}

ImageFile read(const std::string& file, const ConvertOptions& options = {}) {
    return readImage(test::bufferOf(file), options);
}

struct Kind {
    std::uint32_t bytesPerPixel;
    std::uint32_t bits;
};

constexpr Kind kKinds[] = {{1, 1}, {1, 2}, {1, 4}, {1, 8}, {2, 12}, {2, 16}, {3, 8}};
constexpr FileFormat kFormats[] = {FileFormat::pnm, FileFormat::pam, FileFormat::png,
                                   FileFormat::tiff, FileFormat::npy};

class ImageFormats : public testing::TestWithParam<Kind> {};

TEST_P(ImageFormats, EveryImageComesBackFromEveryFormat) {
    const Kind kind = GetParam();
    for (const auto& [width, height] :
         {std::pair{2U, 2U}, {3U, 5U}, {17U, 9U}, {70U, 33U}, {9U, 300U}})
        for (const FileFormat format : kFormats) {
            const ImageFile image = test::makeImage(width, height, kind.bytesPerPixel, kind.bits);
            const ImageFile back = read(fileOf(image, format));
            EXPECT_EQ(test::samplesOf(back), test::samplesOf(image)) << static_cast<int>(format);
            EXPECT_EQ(back.geometry.bytes_per_pixel, kind.bytesPerPixel);
            EXPECT_THAT(back.metadata.notKept, IsEmpty());
            // Only .npy does not say how many bits there are.
            if (format != FileFormat::npy) {
                EXPECT_EQ(back.geometry.bits_per_pixel, kind.bits);
            }
        }
}

/// A TIFF may lack the last bytes, which say that there is no other page: its pixels are there.
TEST_P(ImageFormats, EveryPrefixIsRefusedOrHasAllPixels) {
    const Kind kind = GetParam();
    const ImageFile image = test::makeImage(5, 7, kind.bytesPerPixel, kind.bits);
    for (const FileFormat format : kFormats) {
        const std::string file = fileOf(image, format);
        for (std::size_t length = 0; length < file.size(); ++length) {
            ImageFile back;
            const std::string words = test::refusalOf([&] { back = read(file.substr(0, length)); });
            if (words.empty()) {
                EXPECT_EQ(format, FileFormat::tiff) << length;
                EXPECT_EQ(test::samplesOf(back), test::samplesOf(image)) << length;
            }
        }
    }
}

/// A flip may stand where it says something else: then there is another image, but never a crash.
TEST_P(ImageFormats, FlippedBitsDoNoHarm) {
    const Kind kind = GetParam();
    const ImageFile image = test::makeImage(6, 4, kind.bytesPerPixel, kind.bits);
    ConvertOptions options;
    options.reading.mostPixels = 1 << 20;
    int refused = 0;
    for (const FileFormat format : kFormats) {
        const std::string file = fileOf(image, format);
        for (std::size_t bit = 0; bit < 8 * file.size(); ++bit) {
            std::string damaged = file;
            damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << bit % 8));
            refused += test::refusalOf([&] { read(damaged, options); }).empty() ? 0 : 1;
        }
    }
    EXPECT_GT(refused, 500);
}

INSTANTIATE_TEST_SUITE_P(Kinds, ImageFormats, testing::ValuesIn(kKinds), [](const auto& kind) {
    return std::to_string(kind.param.bytesPerPixel) + "Bytes" + std::to_string(kind.param.bits) +
           "Bits";
});

Metadata fullMetadata() {
    Metadata metadata;
    metadata.xmp = "<x:xmpmeta/>";
    metadata.description =
        "f\xC3\xBC"
        "nf \xE2\x82\xAC";
    metadata.resolution = Resolution{11811, 5906};
    return metadata;
}

TEST(ImageMetadata, GoesThroughPngAndTiff) {
    const ImageFile image = test::makeImage(5, 7, 1, 8);
    for (const FileFormat format : {FileFormat::png, FileFormat::tiff}) {
        const Metadata back = read(fileOf(image, format, fullMetadata())).metadata;
        EXPECT_EQ(back.xmp, fullMetadata().xmp);
        EXPECT_EQ(back.description, fullMetadata().description);
        ASSERT_TRUE(back.resolution);
        EXPECT_EQ(back.resolution->pixelsPerMetreX, 11811U);
        EXPECT_EQ(back.resolution->pixelsPerMetreY, 5906U);
        EXPECT_THAT(back.notKept, IsEmpty());
    }
}

TEST(ImageMetadata, ExifGoesThroughPng) {
    Metadata metadata;
    metadata.exif = std::string("MM\0*\0\0\0\10\0\0", 10);
    EXPECT_EQ(read(fileOf(test::makeImage(5, 7, 1, 8), FileFormat::png, metadata)).metadata.exif,
              metadata.exif);
}

std::vector<LostPart> lostIn(FileFormat format, const Metadata& metadata) {
    ImageFile image = test::makeImage(4, 4, 1, 8);
    image.metadata = metadata;
    return partsLostIn(format, image);
}

TEST(ImageMetadata, WhatAFormatDoesNotHoldIsNamed) {
    EXPECT_EQ(lostIn(FileFormat::png, fullMetadata()).size(), 0U);
    EXPECT_EQ(lostIn(FileFormat::pgm, fullMetadata()).size(), 3U);
    Metadata metadata;
    metadata.exif = "MM";
    metadata.maxValue = 1000;
    metadata.rawType = "int16";
    EXPECT_EQ(lostIn(FileFormat::tiff, metadata).size(), 3U);
    EXPECT_EQ(lostIn(FileFormat::pgm, metadata).size(), 2U);
    EXPECT_EQ(lostIn(FileFormat::npy, metadata).size(), 2U);
    EXPECT_EQ(lostIn(FileFormat::stream, metadata).size(), 3U);
    EXPECT_EQ(namesOf(lostIn(FileFormat::raw, {})), "the sides and bits of the image");
    EXPECT_EQ(noteOn(lostIn(FileFormat::raw, {})), "");
}

TEST(ImageMetadata, AProfileThatLibpngRefusesIsNamed) {
    Metadata metadata;
    metadata.icc = "no profile";
    EXPECT_EQ(namesOf(lostIn(FileFormat::png, metadata)),
              "the colour profile, which libpng refuses,");
    EXPECT_EQ(namesOf(lostIn(FileFormat::tiff, metadata)), "");
}

TEST(ImageBits, AreThoseOfTheSamplesTheFileOrTheArgument) {
    const std::string file =
        fileOf(test::makeImage(2, 2, 2, 12, {0xFF, 0x0F, 1, 0, 2, 0, 3, 0}), FileFormat::png);
    EXPECT_EQ(read(file).geometry.bits_per_pixel, 12U);
    ConvertOptions options;
    options.bits = 14;
    EXPECT_EQ(read(file, options).geometry.bits_per_pixel, 14U);
    options.bits = 11;
    EXPECT_EQ(test::refusalOf([&] { read(file, options); }),
              "has samples of 12 bits, more than the 11 that were announced");
    const std::string dark = fileOf(test::makeImage(2, 2, 2, 16, Bytes(8, 0)), FileFormat::png);
    EXPECT_EQ(read(dark).geometry.bits_per_pixel, 1U);
    const std::string bytes = fileOf(test::makeImage(2, 2, 1, 8), FileFormat::png);
    options.bits = 9;
    EXPECT_THAT(test::refusalOf([&] { read(bytes, options); }),
                HasSubstr("fewer than --bits says"));
}

TEST(ImageWriting, FormatsRefuseWhatTheyDoNotHold) {
    const auto refusalOf = [](FileFormat format, std::uint32_t bytes, std::uint32_t bits) {
        return test::refusalOf(
            [&] { requireHolds(format, test::makeImage(4, 4, bytes, bits).geometry); });
    };
    EXPECT_THAT(refusalOf(FileFormat::pgm, 3, 8), HasSubstr("PPM"));
    EXPECT_THAT(refusalOf(FileFormat::ppm, 1, 8), HasSubstr("PGM"));
    EXPECT_THAT(refusalOf(FileFormat::pbm, 1, 2), HasSubstr("PBM"));
    EXPECT_EQ(refusalOf(FileFormat::pbm, 1, 1), "");
    EXPECT_EQ(refusalOf(FileFormat::pnm, 3, 8), "");
}

TEST(ImageWriting, BitmapsHaveOneForBlack) {
    EXPECT_EQ(fileOf(test::makeImage(9, 2, 1, 1, Bytes(18, 0)), FileFormat::pbm),
              "P4\n9 2\n\xFF\x80\xFF\x80");
}

TEST(ImageWriting, HeadsAreThoseOfTheFormats) {
    const ImageFile gray = test::makeImage(2, 2, 1, 8, {'a', 'b', 'c', 'd'});
    EXPECT_EQ(fileOf(gray, FileFormat::pgm), "P5\n2 2\n255\nabcd");
    EXPECT_EQ(fileOf(gray, FileFormat::pam),
              "P7\nWIDTH 2\nHEIGHT 2\nDEPTH 1\nMAXVAL 255\nTUPLTYPE GRAYSCALE\nENDHDR\nabcd");
    EXPECT_EQ(
        fileOf(test::makeImage(2, 2, 2, 12, {'a', 1, 'b', 2, 'c', 3, 'd', 4}), FileFormat::pgm),
        "P5\n2 2\n4095\n\1a\2b\3c\4d");
    // Samples of two bytes have a maximum value above 255.
    EXPECT_EQ(
        fileOf(test::makeImage(2, 2, 2, 8, {'a', 0, 'b', 0, 'c', 0, 'd', 0}), FileFormat::pgm),
        std::string("P5\n2 2\n511\n\0a\0b\0c\0d", 19));
    Metadata metadata;
    metadata.maxValue = 200;
    EXPECT_EQ(fileOf(gray, FileFormat::pgm, metadata), "P5\n2 2\n200\nabcd");
    metadata.rawType = "int16";
    const std::string npy = fileOf(test::makeImage(2, 2, 2, 16, {1, 0x80, 2, 0x80, 3, 0x80, 4, 0}),
                                   FileFormat::npy, metadata);
    EXPECT_THAT(npy, HasSubstr("'descr': '<i2', 'fortran_order': False, 'shape': (2, 2), }"));
    EXPECT_EQ(npy.size() % 64, 8U);
    EXPECT_EQ(npy.substr(npy.size() - 8), std::string("\1\0\2\0\3\0\4\x80", 8));
}

TEST(ImageWriting, WhatTheSinkThrowsArrives) {
    class CFullSink final : public IByteSink {
        void write(ByteView) override { throw Refusal{"full"}; }
    };
    for (const FileFormat format : kFormats) {
        ImageFile image = test::makeImage(40, 40, 1, 8);
        CFullSink sink;
        EXPECT_EQ(test::refusalOf([&] { writeImage(image, format, sink); }), "full");
    }
}

}  // namespace

#include "convert/TiffReader.h"

#include <functional>
#include <gmock/gmock.h>

#include "convert/CTiffFile.h"
#include "convert/ConvertTestSupport.h"

namespace {

using namespace qmx;
using test::Bytes;
using testing::HasSubstr;
using testing::StartsWith;

constexpr std::uint32_t kSide = 8;

/// Returns: a TIFF of 8 x 8 gray pixels of 8 bits, unless `change` makes it another.
Bytes tiffOf(const std::function<void(TIFF*)>& change, const Bytes& rows,
             std::size_t rowBytes = kSide) {
    Bytes written;
    CTiffFile file(written, rows.size());
    TIFF* tiff = file.get();
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kSide);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kSide);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, kSide);
    change(tiff);
    Bytes copy = rows;
    for (std::uint32_t r = 0; r < kSide; ++r)
        EXPECT_EQ(TIFFWriteScanline(tiff, copy.data() + r * rowBytes, r, 0), 1);
    EXPECT_TRUE(file.close());
    return written;
}

Bytes countingRows(std::size_t size = kSide * kSide) {
    Bytes rows(size);
    for (std::size_t i = 0; i < size; ++i)
        rows[i] = static_cast<unsigned char>(i);
    return rows;
}

std::string refusal(const Bytes& file) {
    return test::refusalOf([&] { readTiff(file, {}); });
}

std::string lostIn(const Bytes& file) {
    return namesOf(readTiff(file, {}).metadata.notKept);
}

TEST(TiffReader, GrayComesBack) {
    const ImageFile image = readTiff(tiffOf([](TIFF*) {}, countingRows()), {});
    EXPECT_EQ(test::samplesOf(image), countingRows());
    EXPECT_EQ(namesOf(image.metadata.notKept), "");
}

TEST(TiffReader, AnOpaquePaletteHasItsOwnColours) {
    Bytes pairs;
    for (unsigned char i = 0; i < kSide * kSide; ++i)
        pairs.insert(pairs.end(), {i, 0xFF});
    const Bytes file = tiffOf(
        [](TIFF* tiff) {
            std::uint16_t red[256];
            std::uint16_t green[256];
            std::uint16_t blue[256];
            for (unsigned i = 0; i < 256; ++i) {
                red[i] = static_cast<std::uint16_t>(257 * i);
                green[i] = static_cast<std::uint16_t>(257 * (255 - i));
                blue[i] = 0;
            }
            const std::uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
            TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_PALETTE);
            TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 2);
            TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &alpha);
            TIFFSetField(tiff, TIFFTAG_COLORMAP, red, green, blue);
        },
        pairs, 2 * kSide);
    ReadOptions options;
    options.leavesOutOpaqueAlpha = true;
    const Bytes pixels = test::samplesOf(readTiff(file, options));
    for (unsigned char i = 0; i < kSide * kSide; ++i)
        EXPECT_EQ(Bytes(pixels.begin() + 3 * i, pixels.begin() + 3 * i + 3),
                  Bytes({i, static_cast<unsigned char>(255 - i), 0}));
}

/// libtiff only warns of a strip whose codes make no rows, and gives white ones.
TEST(TiffReader, CodesThatMakeNoRowsAreDamage) {
    const auto asFax = [](TIFF* tiff) {
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
    };
    const Bytes rows = {0x55, 0xAA, 0x0F, 0xF0, 0x3C, 0xC3, 0x81, 0x7E};
    const Bytes file = tiffOf(asFax, rows, 1);
    EXPECT_EQ(refusal(file), "");
    int refused = 0;
    // The strip stands behind the head of 8 bytes.
    for (std::size_t bit = 0; bit < 8 * 8; ++bit) {
        Bytes damaged = file;
        damaged[8 + bit / 8] = static_cast<unsigned char>(damaged[8 + bit / 8] ^ (1U << bit % 8));
        const std::string words = refusal(damaged);
        EXPECT_TRUE(words.empty() || words.starts_with("is a damaged TIFF: ")) << words;
        refused += words.empty() ? 0 : 1;
        if (words.empty()) {
            EXPECT_TRUE(readTiff(damaged, {}).notes.empty()) << "a warning about pixels is no note";
        }
    }
    EXPECT_GT(refused, 20);
}

TEST(TiffReader, APageThatCannotBeReadIsDamage) {
    Bytes file = tiffOf([](TIFF*) {}, countingRows());
    // The first page says that another one follows, behind the end of the file.
    const std::size_t page = file[4] + 256U * file[5];
    const std::size_t next = page + 2 + 12 * (file[page] + 256U * file[page + 1]);
    ASSERT_LE(next + 4, file.size());
    file[next] = 0xF0;
    file[next + 1] = 0xFF;
    EXPECT_THAT(refusal(file), StartsWith("is a damaged TIFF: "));
}

TEST(TiffReader, PlanesInDepthArePages) {
    const Bytes file =
        tiffOf([](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_IMAGEDEPTH, 2); }, countingRows());
    EXPECT_THAT(refusal(file), StartsWith("has 2 pages; "));
}

TEST(TiffReader, TagsThatSayMoreAreNamed) {
    const auto lostWith = [](const std::function<void(TIFF*)>& change) {
        return lostIn(tiffOf(change, countingRows()));
    };
    EXPECT_EQ(
        lostWith([](TIFF* t) { TIFFSetField(t, TIFFTAG_SUBFILETYPE, FILETYPE_REDUCEDIMAGE); }),
        "TIFF tag 254");
    EXPECT_EQ(lostWith([](TIFF* t) { TIFFSetField(t, TIFFTAG_MINSAMPLEVALUE, 3); }),
              "TIFF tag 280");
    EXPECT_EQ(lostWith([](TIFF* t) { TIFFSetField(t, TIFFTAG_MAXSAMPLEVALUE, 99); }),
              "TIFF tag 281");
    EXPECT_EQ(lostWith([](TIFF* t) { TIFFSetField(t, TIFFTAG_MAXSAMPLEVALUE, 255); }), "");
    EXPECT_EQ(lostWith([](TIFF* t) { TIFFSetField(t, TIFFTAG_HALFTONEHINTS, 1, 2); }),
              "TIFF tag 321");
    EXPECT_EQ(lostWith([](TIFF* t) {
                  TIFFSetField(t, TIFFTAG_XPOSITION, 1.5);
                  TIFFSetField(t, TIFFTAG_YPOSITION, 2.5);
              }),
              "TIFF tags 286, 287");
    EXPECT_EQ(lostWith([](TIFF* t) {
                  TIFFSetField(t, TIFFTAG_SOFTWARE, "a program");
                  TIFFSetField(t, TIFFTAG_PAGENUMBER, 1, 2);
              }),
              "TIFF tags 297, 305");
}

}  // namespace

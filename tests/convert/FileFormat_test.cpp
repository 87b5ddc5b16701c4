#include "convert/FileFormat.h"

#include <gmock/gmock.h>

#include "convert/ConvertTestSupport.h"
#include "convert/OutputName.h"

namespace {

using namespace qmx;
using namespace std::string_view_literals;
using testing::HasSubstr;

TEST(FileFormat, ContentDecides) {
    EXPECT_EQ(formatOfContent(test::viewOf("\x89PNG\r\n\x1A\n")), FileFormat::png);
    EXPECT_EQ(formatOfContent(test::viewOf("II*\0...."sv)), FileFormat::tiff);
    EXPECT_EQ(formatOfContent(test::viewOf("MM\0+...."sv)), FileFormat::tiff);
    EXPECT_EQ(formatOfContent(test::viewOf("\x93NUMPY...")), FileFormat::npy);
    EXPECT_EQ(formatOfContent(test::viewOf("P5 2 2")), FileFormat::pnm);
    EXPECT_EQ(formatOfContent(test::viewOf("P7\n")), FileFormat::pam);
    EXPECT_EQ(formatOfContent(test::viewOf("TK30\1\10\2\0\2\0\0\0\0\0\0\0"sv)), FileFormat::stream);
}

TEST(FileFormat, OthersAreRefusedByName) {
    const auto refusal = [](std::string_view file) {
        return test::refusalOf([&] { formatOfContent(test::viewOf(file)); });
    };
    EXPECT_EQ(refusal("\xFF\xD8\xFF\xE0"),
              "is a JPEG file, which is lossy: its stream would be several times as long");
    EXPECT_THAT(refusal("RIFF1234WEBPVP8 "), HasSubstr("a WebP file, which is lossy"));
    EXPECT_THAT(refusal("RIFF1234WEBPVP8L"), HasSubstr("a WebP file: save it as PNG"));
    EXPECT_THAT(refusal("\0\0\0\14jP  \r\n\x87\n"sv), HasSubstr("a JPEG 2000 file"));
    EXPECT_THAT(refusal("GIF89a"), HasSubstr("a GIF file"));
    EXPECT_THAT(refusal("Pf\n2 2\n"), HasSubstr("floating-point"));
    EXPECT_THAT(refusal(std::string(128, '\0') + "DICM"), HasSubstr("DICOM"));
    EXPECT_EQ(refusal(""), "is empty");
    EXPECT_THAT(refusal("P"), HasSubstr("neither PNM"));
    EXPECT_THAT(refusal("hello"), HasSubstr("neither PNM"));
}

TEST(FileFormat, NamesEndInTheirFormatInAnyCase) {
    EXPECT_EQ(formatOfName("a.b/scan.TIFF"), FileFormat::tiff);
    EXPECT_EQ(formatOfName("scan.png.tk"), FileFormat::stream);
    EXPECT_EQ(formatOfName("scan.jpg"), std::nullopt);
    EXPECT_EQ(formatOfName("scan"), std::nullopt);
    EXPECT_EQ(formatOfName(""), std::nullopt);
}

TEST(OutputName, AFormatMayStandInFront) {
    EXPECT_EQ(namedOutput("scan.png").format, FileFormat::png);
    EXPECT_EQ(namedOutput("png:scan").path, "scan");
    EXPECT_TRUE(namedOutput("png:-").isStandardOutput());
    EXPECT_EQ(namedOutput("-").format, FileFormat::stream);
    EXPECT_EQ(namedOutput("raw:a:b").path, "a:b");
    EXPECT_NE(test::refusalOf([] { namedOutput("scan.jpg"); }), "");
    EXPECT_NE(test::refusalOf([] { namedOutput("png:"); }), "");
    EXPECT_NE(test::refusalOf([] { namedOutput(""); }), "");
}

TEST(OutputName, AnEndingIsPutOnAndTakenOff) {
    EXPECT_EQ(derivedOutput("a/scan.tif", false).path, "a/scan.tif.tk");
    EXPECT_EQ(derivedOutput("a/scan.tif.tk", true).path, "a/scan.tif");
    EXPECT_EQ(derivedOutput("a/scan.tif.tk", true).format, FileFormat::tiff);
    EXPECT_EQ(derivedOutput("a.b/scan.tk", true).path, "a.b/scan.png") << "no other ending";
    EXPECT_NE(test::refusalOf([] { derivedOutput("scan.jpg.tk", true); }), "");
    EXPECT_NE(test::refusalOf([] { derivedOutput("scan.tk.tk", true); }), "");
    EXPECT_NE(test::refusalOf([] { derivedOutput("scan.bin", true); }), "");
}

}  // namespace

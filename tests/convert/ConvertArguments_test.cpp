#include "convert/ConvertArguments.h"

#include <gmock/gmock.h>

namespace {

using namespace qmx;
using testing::ElementsAre;
using testing::HasSubstr;

ConvertArguments parse(std::vector<const char*> words) {
    words.insert(words.begin(), "tesk-convert");
    return parseConvertArguments(static_cast<int>(words.size()), words.data());
}

std::string complaintOf(const std::vector<const char*>& words) {
    const ConvertArguments arguments = parse(words);
    return arguments.task == ConvertTask::refuse ? arguments.complaint : "";
}

TEST(ConvertArguments, InputAndOutput) {
    const ConvertOptions options = parse({"a.png", "b.tk"}).options;
    EXPECT_THAT(options.inputs, ElementsAre("a.png"));
    EXPECT_EQ(options.output, "b.tk");
    EXPECT_EQ(options.jobs, 1U);
    EXPECT_FALSE(parse({"a.png"}).options.output);
    EXPECT_THAT(parse({"-", "png:-"}).options.inputs, ElementsAre("-"));
}

TEST(ConvertArguments, AllAreInputsWithAFolderRecursionOrCheck) {
    for (const std::vector<const char*>& words :
         {std::vector{"-d", "out", "a", "b"}, {"a", "-r", "b"}, {"--check", "a", "b"}}) {
        EXPECT_THAT(parse(words).options.inputs, ElementsAre("a", "b"));
        EXPECT_FALSE(parse(words).options.output);
    }
    EXPECT_EQ(complaintOf({"a", "b", "c"}),
              "several inputs need -d FOLDER: -d . writes into this one");
}

TEST(ConvertArguments, BehindTwoDashesThereAreOnlyNames) {
    EXPECT_THAT(parse({"--", "-f", "--rm"}).options.inputs, ElementsAre("-f"));
}

TEST(ConvertArguments, NamesAreNotTakenApart) {
    EXPECT_THAT(parse({"-r", "[a]", "-v", "[x,y]", "--", "--", "[z]"}).options.inputs,
                ElementsAre("[a]", "[x,y]", "--", "[z]"));
    EXPECT_THAT(complaintOf({"a", "--unknown=[x]", "-y"}), HasSubstr("-y --unknown=[x]"));
}

TEST(ConvertArguments, EveryOptionOfTheHelpIsTaken) {
    const ConvertOptions options = parse({"-d",
                                          "out",
                                          "-r",
                                          "--only",
                                          "images",
                                          "-j",
                                          "0",
                                          "--resume",
                                          "-f",
                                          "--bits",
                                          "12",
                                          "--bare",
                                          "--drop-metadata",
                                          "--opaque",
                                          "--strict",
                                          "--max-pixels",
                                          "2G",
                                          "--log",
                                          "l",
                                          "-v",
                                          "a"})
                                       .options;
    EXPECT_EQ(options.folder, "out");
    EXPECT_TRUE(options.isRecursive && options.resumes && options.overwrites && options.isBare);
    EXPECT_TRUE(options.dropsMetadata && options.reading.leavesOutOpaqueAlpha && options.isStrict &&
                options.isVerbose);
    EXPECT_EQ(options.only, OnlyKind::images);
    EXPECT_EQ(options.jobs, 0U);
    EXPECT_EQ(options.bits, 12U);
    EXPECT_EQ(options.reading.mostPixels, 2'000'000'000U);
    EXPECT_EQ(options.logFile, "l");
    EXPECT_EQ(parse({"--bits", "auto", "a"}).options.bits, 0U);
    EXPECT_EQ(parse({"--to", "npy", "a"}).options.imageEnding, "npy");
    EXPECT_EQ(parse({"--raw", "2x3:gray8", "a"}).options.raw->height, 3U);
    EXPECT_EQ(parse({"--bytes", "3K", "a"}).options.budget.bytes, 3072U);
    EXPECT_EQ(parse({"--rate", "0.5", "a"}).options.budget.rate, 0.5);
    EXPECT_EQ(parse({"--bits-per-sample", "1.5", "a"}).options.budget.bitsPerSample, 1.5);
    EXPECT_EQ(parse({"--reduce", "2", "a"}).options.reduceLevels, 2U);
    EXPECT_EQ(parse({"--thumbnail", "64", "-q", "a"}).options.thumbnailSide, 64U);
    EXPECT_TRUE(parse({"--rm", "a"}).options.removesInputs);
}

TEST(ConvertArguments, TheHelpNamesEveryOption) {
    for (const char* option : {"-d, --directory ",
                               "-r, --recursive ",
                               "  --only ",
                               "  --to ",
                               "-j, --jobs ",
                               "  --resume ",
                               "-f, --force ",
                               "  --rm ",
                               "  --raw ",
                               "  --bytes ",
                               "  --rate ",
                               "  --bits-per-sample ",
                               "  --bits ",
                               "  --bare ",
                               "  --drop-metadata ",
                               "  --opaque ",
                               "  --strict ",
                               "  --reduce ",
                               "  --thumbnail ",
                               "  --check ",
                               "  --max-pixels ",
                               "  --log ",
                               "-q, --quiet ",
                               "-v, --verbose ",
                               "-h, --help, --version "})
        EXPECT_THAT(kConvertHelp, HasSubstr(option));
}

TEST(ConvertArguments, HelpAndVersionWin) {
    EXPECT_EQ(parse({"--help"}).task, ConvertTask::help);
    EXPECT_EQ(parse({"--version", "a", "b", "c"}).task, ConvertTask::version);
}

TEST(ConvertArguments, WrongOnesAreNamed) {
    EXPECT_EQ(complaintOf({}), "no file is named");
    EXPECT_THAT(complaintOf({"--unknown", "a"}), HasSubstr("--unknown"));
    EXPECT_THAT(complaintOf({"-d"}), HasSubstr("--directory"));
    for (const char* number : {"0", "K", "3T", "-1", "", "99999999999G", "15"})
        EXPECT_THAT(complaintOf({"--bytes", number, "a"}), HasSubstr("--bytes")) << number;
    for (const char* rate : {"0", "-1", "x", "nan"})
        EXPECT_NE(complaintOf({"--rate", rate, "a"}), "") << rate;
    EXPECT_THAT(complaintOf({"--bits", "17", "a"}), HasSubstr("neither 1 to 16 nor auto"));
    EXPECT_THAT(complaintOf({"--only", "both", "a"}), HasSubstr("neither 'images' nor 'streams'"));
    EXPECT_THAT(complaintOf({"--raw", "2x3", "a"}), HasSubstr("640x480:gray12"));
    EXPECT_NE(complaintOf({"-j", "100000", "a"}), "");
    EXPECT_NE(complaintOf({"--thumbnail", "0", "a"}), "");
}

TEST(ConvertArguments, SomeDoNotGoTogether) {
    EXPECT_NE(complaintOf({"--bytes", "100", "--rate", "1", "a"}), "");
    EXPECT_THAT(complaintOf({"--rm", "--rate", "1", "a"}), HasSubstr("would be lost"));
    EXPECT_THAT(complaintOf({"--rm", "-r", "a"}), HasSubstr("--only"));
    EXPECT_EQ(complaintOf({"--rm", "-r", "--only", "images", "a"}), "");
    EXPECT_EQ(complaintOf({"--rm", "-r", "-d", "out", "a"}), "");
    EXPECT_NE(complaintOf({"--rm", "-"}), "");
    EXPECT_NE(complaintOf({"-d", "out", "-"}), "");
    EXPECT_NE(complaintOf({"-q", "-v", "a"}), "");
    EXPECT_NE(complaintOf({"--reduce", "1", "--thumbnail", "9", "a"}), "");
    EXPECT_NE(complaintOf({"--check", "-d", "out", "a"}), "");
}

}  // namespace

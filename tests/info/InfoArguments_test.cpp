#include "info/InfoArguments.h"

#include <gmock/gmock.h>

namespace {

using namespace qmx;
using testing::ElementsAre;
using testing::StrEq;

InfoArguments parse(std::vector<const char*> words) {
    words.insert(words.begin(), "tesk-info");
    return parseInfoArguments(static_cast<int>(words.size()), words.data());
}

TEST(InfoArguments, FilesAreDescribedAsText) {
    const InfoArguments arguments = parse({"a.tk", "-", "b.tk"});
    EXPECT_EQ(arguments.task, InfoTask::describe);
    EXPECT_THAT(arguments.files, ElementsAre(StrEq("a.tk"), StrEq("-"), StrEq("b.tk")));
    EXPECT_FALSE(arguments.asJson || arguments.decodes || arguments.listsSections);
}

TEST(InfoArguments, OptionsMayStandAnywhere) {
    EXPECT_TRUE(parse({"a.tk", "--json"}).asJson);
    EXPECT_TRUE(parse({"--check", "a.tk"}).decodes);
    EXPECT_TRUE(parse({"--sections", "a.tk"}).listsSections);
}

TEST(InfoArguments, BehindTwoHyphensAreFilesOnly) {
    const InfoArguments arguments = parse({"--json", "--", "--check", "--"});
    EXPECT_EQ(arguments.task, InfoTask::describe);
    EXPECT_FALSE(arguments.decodes);
    EXPECT_THAT(arguments.files, ElementsAre(StrEq("--check"), StrEq("--")));
}

TEST(InfoArguments, HelpAndVersionWinOverWhatFollowsAndNeedNoFile) {
    EXPECT_EQ(parse({"--help"}).task, InfoTask::help);
    EXPECT_EQ(parse({"a.tk", "--version", "--bogus"}).task, InfoTask::version);
}

TEST(InfoArguments, UnknownOptionsAndMissingFilesAreRefused) {
    EXPECT_EQ(parse({}).task, InfoTask::refuse);
    EXPECT_EQ(parse({"--json"}).complaint, "no file is named");
    EXPECT_EQ(parse({"--js", "a.tk"}).complaint, "unknown option '--js'");
    EXPECT_EQ(parse({"-j", "a.tk"}).task, InfoTask::refuse);
    EXPECT_EQ(parse({""}).files.size(), 1U);
}

}  // namespace

#include "convert/ConvertPlan.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>

#include "support/TempDir.h"

namespace {

using namespace qmx;
using testing::ElementsAre;
using testing::HasSubstr;
namespace fs = std::filesystem;

/// The first bytes of a stream.
const std::string kStream("TK30\1\10\2\0\2\0\0\0\0\0\0\0", 16);

class ConvertPlanTest : public testing::Test {
protected:
    void put(const std::string& name, const std::string& content = "P5") {
        fs::create_directories(fs::path(folder / name).parent_path());
        std::ofstream(folder / name) << content;
    }
    std::vector<std::string> inputs() {
        std::vector<std::string> names;
        for (const ConvertJob& job : planConversion(options))
            names.push_back(job.input.substr((folder / "").size()));
        return names;
    }

    test::TempDir folder;
    ConvertOptions options;
};

TEST_F(ConvertPlanTest, FoldersAreTakenInTheOrderOfNames) {
    put("b.pgm");
    put("a/z.pgm");
    put("a/c.pgm");
    put("a/.c.pgm.tk.part-12");
    options.inputs = {folder / "."};
    options.isRecursive = true;
    std::vector<std::string> names;
    for (const ConvertJob& job : planConversion(options))
        names.push_back(fs::path(job.input).filename().string());
    EXPECT_THAT(names, ElementsAre("c.pgm", "z.pgm", "b.pgm"));
}

TEST_F(ConvertPlanTest, AnotherFolderGetsTheFoldersBelowAnInput) {
    put("in/a/x.pgm");
    put("y.pgm");
    options.inputs = {folder / "in", folder / "y.pgm"};
    options.isRecursive = true;
    options.folder = "out";
    const std::vector<ConvertJob> jobs = planConversion(options);
    ASSERT_EQ(jobs.size(), 2U);
    EXPECT_EQ(jobs[0].nameForOutput, "out/a/x.pgm");
    EXPECT_EQ(jobs[1].nameForOutput, "out/y.pgm");
}

TEST_F(ConvertPlanTest, OneKindOnlyIsTakenWhenAsked) {
    put("a.pgm");
    put("b.pgm.tk", kStream);
    options.inputs = {folder / "a.pgm", folder / "b.pgm.tk"};
    EXPECT_THAT(inputs(), ElementsAre("a.pgm", "b.pgm.tk"));
    options.only = OnlyKind::images;
    EXPECT_THAT(inputs(), ElementsAre("a.pgm"));
    options.only = OnlyKind::streams;
    EXPECT_THAT(inputs(), ElementsAre("b.pgm.tk"));
}

TEST_F(ConvertPlanTest, TwoInputsWithOneOutputAreNotBothTaken) {
    put("a/x.pgm");
    put("b/x.pgm");
    options.inputs = {folder / "a/x.pgm", folder / "b/x.pgm"};
    options.folder = "out";
    const std::vector<ConvertJob> jobs = planConversion(options);
    EXPECT_EQ(jobs[0].complaint, "");
    EXPECT_EQ(jobs[1].complaint, "would have the same output as '" + (folder / "a/x.pgm") + "'");
}

TEST_F(ConvertPlanTest, StreamsWithoutAnImagesNameGetOne) {
    put("x.bin.tk", kStream);
    options.inputs = {folder / "x.bin.tk"};
    EXPECT_THAT(planConversion(options)[0].complaint, HasSubstr("name an OUTPUT"));
    options.output = "png:y";
    EXPECT_EQ(planConversion(options)[0].complaint, "");
}

}  // namespace

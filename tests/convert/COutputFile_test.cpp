#include "convert/COutputFile.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>

#include "convert/ConvertTestSupport.h"
#include "support/TempDir.h"

namespace {

using namespace qmx;
using testing::HasSubstr;
namespace fs = std::filesystem;

std::string contentOf(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class COutputFileTest : public testing::Test {
protected:
    std::size_t filesInFolder() const {
        const fs::directory_iterator begin((folder / ".").c_str());
        return static_cast<std::size_t>(std::distance(fs::begin(begin), fs::end(begin)));
    }

    test::TempDir folder;
    std::string name = folder / "out.tk";
};

TEST_F(COutputFileTest, HasItsNameOnlyWhenItIsComplete) {
    COutputFile file(name, {});
    file.write("half");
    EXPECT_FALSE(fs::exists(name));
    EXPECT_EQ(filesInFolder(), 1U);
    file.write(" whole");
    file.finish();
    EXPECT_EQ(contentOf(name), "half whole");
    EXPECT_EQ(filesInFolder(), 1U);
}

TEST_F(COutputFileTest, LeavesNothingWithoutFinish) {
    { COutputFile(name, {}).write("half"); }
    EXPECT_EQ(filesInFolder(), 0U);
}

TEST_F(COutputFileTest, KeepsWhatIsThere) {
    std::ofstream(name) << "old";
    EXPECT_EQ(test::refusalOf([&] { COutputFile(name, {}); }),
              "'" + name + "' is there already: -f writes over it");
    EXPECT_EQ(contentOf(name), "old");
    EXPECT_EQ(filesInFolder(), 1U);
}

TEST_F(COutputFileTest, KeepsWhatCameMeanwhile) {
    COutputFile file(name, {});
    file.write("mine");
    std::ofstream(name) << "theirs";
    EXPECT_THAT(test::refusalOf([&] { file.finish(); }), HasSubstr("is there already"));
    EXPECT_EQ(contentOf(name), "theirs");
}

TEST_F(COutputFileTest, ReplacesWhatIsThereWhenAsked) {
    for (const bool reachesDisk : {false, true}) {
        std::ofstream(name) << "old";
        COutputFile file(name, {true, reachesDisk});
        file.write("new");
        EXPECT_EQ(contentOf(name), "old");
        file.finish();
        EXPECT_EQ(contentOf(name), "new");
        EXPECT_EQ(filesInFolder(), 1U);
    }
}

TEST_F(COutputFileTest, LongNamesHaveATemporaryOneToo) {
    const std::string longName = folder / (std::string(252, 'x') + ".tk");
    COutputFile file(longName, {});
    file.write("x");
    file.finish();
    EXPECT_EQ(contentOf(longName), "x");
}

TEST_F(COutputFileTest, ADeviceIsWrittenAsItIs) {
    COutputFile nowhere("/dev/null", {true, true});
    nowhere.write("x");
    nowhere.finish();
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    COutputFile full("/dev/full", {});
    EXPECT_EQ(test::refusalOf([&] { full.write("x"); }),
              "cannot write '/dev/full': No space left on device");
}

TEST_F(COutputFileTest, SaysWhatIsWrongWithAFolder) {
    EXPECT_THAT(test::refusalOf([&] { COutputFile(folder / "none/out.tk", {}); }),
                HasSubstr("No such file or directory"));
}

TEST(PartNames, AreThoseOfThisProgramOnly) {
    EXPECT_TRUE(isPartName(".scan.tk.part-123"));
    EXPECT_FALSE(isPartName("scan.tk.part-123"));
    EXPECT_FALSE(isPartName(".scan.tk.part-"));
    EXPECT_FALSE(isPartName(".scan.tk.part-12x"));
    EXPECT_FALSE(isPartName(".hidden.png"));
}

}  // namespace

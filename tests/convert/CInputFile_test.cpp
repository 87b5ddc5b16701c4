#include "convert/CInputFile.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>

#include "convert/ConvertTestSupport.h"
#include "support/TempDir.h"

namespace {

using namespace qmx;
namespace fs = std::filesystem;

class CInputFileTest : public testing::Test {
protected:
    void put(const std::string& content) const { std::ofstream(name) << content; }
    std::string readAll(std::uint64_t mostBytes = 1 << 20) const {
        const Buffer all = CInputFile(name).readAll(mostBytes);
        return {reinterpret_cast<const char*>(all.bytes.get()), all.sizeBytes};
    }

    test::TempDir folder;
    std::string name = folder / "in";
};

TEST_F(CInputFileTest, FilesOfEveryLengthAreReadWhole) {
    for (const std::size_t length : {0U, 1U, 255U, 256U, 257U, 512U, 1000U, 1U << 20}) {
        std::string content(length, 'x');
        if (length > 0) content.back() = 'y';
        put(content);
        EXPECT_EQ(readAll(), content) << length;
        EXPECT_EQ(CInputFile(name).head().size(), std::min<std::size_t>(length, 256));
    }
}

TEST_F(CInputFileTest, FilesThatAreTooLongAreRefused) {
    put(std::string(1000, 'x'));
    EXPECT_EQ(readAll(1000).size(), 1000U);
    EXPECT_EQ(test::refusalOf([&] { readAll(999); }),
              "has more than the 999 bytes that an image within --max-pixels may have");
}

TEST_F(CInputFileTest, TheNameLeadsToTheFileUntilItIsAnotherOne) {
    put("first");
    const CInputFile file(name);
    EXPECT_TRUE(file.isStillAt(name));
    fs::rename(name, folder / "elsewhere");
    EXPECT_FALSE(file.isStillAt(name));
    put("first");
    EXPECT_FALSE(file.isStillAt(name));
    fs::remove(name);
    fs::create_symlink("elsewhere", name);
    EXPECT_TRUE(file.isStillAt(name));
}

TEST_F(CInputFileTest, AFileThatIsChangedIsAnotherOne) {
    put("first");
    const auto time = fs::last_write_time(name);
    const CInputFile file(name);
    put("other");
    fs::last_write_time(name, time + std::chrono::nanoseconds(1000));
    EXPECT_FALSE(file.isStillAt(name));
    fs::last_write_time(name, time);
    EXPECT_TRUE(file.isStillAt(name));
    put("longer");
    fs::last_write_time(name, time);
    EXPECT_FALSE(file.isStillAt(name));
}

}  // namespace

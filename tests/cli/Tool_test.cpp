#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include "support/FileDrivers.h"
#include "support/TempDir.h"

namespace {

using test::Bytes;
using test::Content;
using test::decompressFile;
using test::expectSameImage;
using test::imagesOf;
using test::nameOf;
using test::Outcome;
using test::RawImage;
using test::sameBytes;
using test::Size;

class Tool : public testing::Test {
protected:
    /// Runs the tool and drops what it prints on standard output. Returns: what a shell calls its
    /// exit status.
    int run(const std::string& arguments) const {
        const std::string command = "ulimit -c 0; exec '" TESK_TOOL "' " + arguments +
                                    " >/dev/null 2>>" + folder / "errors";
        const int status = std::system(command.c_str());
        return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }

    Bytes compress(const RawImage& image, const std::string& word, const std::string& rate = "") {
        const int numbers[] = {image.bytesPerPixel, image.bitsPerPixel, image.width, image.height};
        test::writeFile(folder / "in.raw", image.bytes);
        std::string arguments = word + ' ' + folder / "in.raw";
        for (const int number : numbers)
            arguments += ' ' + std::to_string(number);
        EXPECT_EQ(run(arguments + ' ' + folder / "out.tk" + ' ' + rate), 0);
        return test::readFile(folder / "out.tk");
    }

    Outcome decompress(const Bytes& stream, const std::string& word) {
        test::writeFile(folder / "in.tk", stream);
        Outcome decoded;
        decoded.status = run(word + ' ' + folder / "in.tk" + ' ' + folder / "out.raw");
        decoded.bytes = test::readFile(folder / "out.raw");
        return decoded;
    }

    /// Checks that the tool does with a stream what the library does.
    void expectAsInLibrary(const Bytes& stream) {
        for (const bool upper : {false, true}) {
            SCOPED_TRACE(upper ? "D" : "d");
            test::expectSameOutcome(decompressFile(stream, upper),
                                    decompress(stream, upper ? "D" : "d"));
        }
    }

    void expectToComeBack(const RawImage& image, const Bytes& stream) {
        for (const char* word : {"d", "D"}) {
            const Outcome decoded = decompress(stream, word);
            EXPECT_EQ(decoded.status, 0);
            EXPECT_TRUE(sameBytes(image.bytes, decoded.bytes));
        }
    }

    /// Warnings are for the tests that look for them.
    void TearDown() override {
        std::ifstream errors(folder / "errors");
        for (std::string line; std::getline(errors, line);)
            EXPECT_EQ(line.substr(0, 15), "tesk: warning: ");
    }
    void SetUp() override { test::writeFile(folder / "errors", {}); }

    test::TempDir folder;
};

TEST_F(Tool, ImagesOfAllSampleTypesComeBack) {
    for (const RawImage& image : imagesOf(
             Content::noise, {{2, 2}, {2, 3}, {3, 3}, {4, 4}, {7, 5}, {33, 18}, {0, 5}, {5, 0}})) {
        SCOPED_TRACE(nameOf(image));
        expectToComeBack(image, compress(image, "c"));
        expectToComeBack(image, compress(image, "C", "99"));
    }
}

TEST_F(Tool, SizesThatDoNotComeBackDecodeTheSameWithEitherWord) {
    for (const RawImage& image :
         imagesOf(Content::photo, {{1, 1}, {1, 50}, {50, 1}, {3, 100}, {100, 3}, {5, 5}})) {
        SCOPED_TRACE(nameOf(image));
        const Bytes stream = compress(image, "c");
        expectSameImage(stream);
        expectAsInLibrary(stream);
    }
}

TEST_F(Tool, BudgetedStreamsDecodeTheSameWithEitherWord) {
    for (const RawImage& image : imagesOf(Content::photo, {{64, 64}, {37, 53}})) {
        SCOPED_TRACE(nameOf(image));
        const Bytes stream = compress(image, "C", "0.3");
        EXPECT_EQ(stream.size(), image.bytes.size() * 3 / 10);
        expectSameImage(stream);
        expectAsInLibrary(stream);
    }
}

TEST_F(Tool, MemoryWordsDecodeAsTheOthersDo) {
    int compared = 0;
    for (const RawImage& image : imagesOf(Content::noise, {{16, 16}, {33, 18}, {1, 7}, {5, 0}})) {
        const Bytes complete = compress(image, "cc", "99");
        for (const std::size_t size :
             {complete.size(), complete.size() - 1, complete.size() / 2, complete.size() / 4}) {
            // Without a byte behind the header d gives zeros and dc nothing.
            if (size <= test::kHeaderBytes) continue;
            SCOPED_TRACE(nameOf(image) + " cut to " + std::to_string(size) + " bytes");
            const Bytes stream(complete.begin(),
                               complete.begin() + static_cast<std::ptrdiff_t>(size));
            const Outcome here = decompressFile(stream, false);
            if (here.status != 0) continue;  // dc reports it, with status 0
            ++compared;
            const Outcome memory = decompress(stream, "dc");
            EXPECT_EQ(memory.status, 0);
            EXPECT_TRUE(sameBytes(here.bytes, memory.bytes));
            EXPECT_TRUE(sameBytes(decompress(stream, "d").bytes, memory.bytes));
        }
    }
    EXPECT_GT(compared, 50);
}

TEST_F(Tool, MemoryWordsCompressAsTheOthersDoWhereTheProfilesAgree) {
    for (const RawImage& image : imagesOf(Content::photo, {{24, 24}, {37, 53}, {3, 40}})) {
        SCOPED_TRACE(nameOf(image));
        EXPECT_TRUE(sameBytes(compress(image, "c"), compress(image, "cc", "99")));
        EXPECT_TRUE(sameBytes(compress(image, "C", "0.3"), compress(image, "cc", "0.3")));
    }
}

TEST_F(Tool, LinesOfTheGreatestLengthPass) {
    for (const Size size : {Size{65535, 1}, {1, 65535}, {65535, 2}, {2, 65535}}) {
        const RawImage image = test::makeImage(Content::photo, 1, 8, size.width, size.height);
        SCOPED_TRACE(nameOf(image));
        const Bytes stream = compress(image, "c");
        EXPECT_EQ(expectSameImage(stream), 0);
        expectAsInLibrary(stream);
    }
}

TEST_F(Tool, CutStreamsDecodeAsInTheLibrary) {
    for (const RawImage& image : imagesOf(Content::noise, {{8, 8}})) {
        const Bytes stream = compress(image, "c");
        for (std::size_t size = test::kHeaderBytes; size <= stream.size(); size += 23) {
            SCOPED_TRACE(nameOf(image) + " cut to " + std::to_string(size) + " bytes");
            expectAsInLibrary({stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size)});
        }
    }
}

}  // namespace

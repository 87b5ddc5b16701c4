#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "cli/SampleDispatch.h"
#include "container/DecompressDriver.h"
#include "support/Bytes.h"
#include "support/TempDir.h"
#include "support/TestImages.h"

namespace {

using test::Bytes;
using test::Content;
using test::RawImage;
using test::sameBytes;

/// Sends standard output to nowhere while it lives.
class Silence {
public:
    Silence() : saved(dup(STDOUT_FILENO)) {
        std::fflush(stdout);
        std::FILE* nowhere = std::fopen("/dev/null", "w");
        dup2(fileno(nowhere), STDOUT_FILENO);
        std::fclose(nowhere);
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
    ~Silence() {
        std::fflush(stdout);
        dup2(saved, STDOUT_FILENO);
        close(saved);
    }

private:
    int saved;
};

constexpr std::size_t kHeaderBytes = sizeof(qmx::TKHeader);

struct Decoded {
    int status = -1;
    Bytes bytes;
};

/// Decompresses a stream of at least 16 bytes in this process.
Decoded decompressHere(const Bytes& stream, bool upper, int extra = 0) {
    qmx::TKHeader header;
    std::memcpy(&header, stream.data(), sizeof header);
    Bytes copy = stream;
    std::FILE* in = fmemopen(copy.data(), copy.size(), "rb");
    char* written = nullptr;
    std::size_t writtenBytes = 0;
    std::FILE* out = open_memstream(&written, &writtenBytes);
    std::fseek(in, sizeof header, SEEK_SET);
    const Silence silence;
    Decoded decoded;
    decoded.status = qmx::dispatchSamples(
        header,
        [&]<class T, class P>() { return qmx::decompress<T, P>(header, in, out, upper, extra); },
        [] { return -1; });
    decoded.bytes.assign(written, written + writtenBytes);
    std::free(written);
    return decoded;
}

std::size_t rawBytes(const Bytes& stream) {
    qmx::TKHeader header;
    std::memcpy(&header, stream.data(), sizeof header);
    return std::size_t{header.xSize} * header.ySize * header.bytesPerPixel;
}

/// Checks that both ways of decompression agree. Returns: their exit status.
int expectSameImage(const Bytes& stream, int extra = 0) {
    const Decoded lower = decompressHere(stream, false, extra);
    const Decoded upper = decompressHere(stream, true, extra);
    EXPECT_EQ(lower.status, upper.status);
    EXPECT_TRUE(sameBytes(lower.bytes, upper.bytes));
    EXPECT_TRUE(lower.status == 0 || lower.status == 1) << lower.status;
    EXPECT_EQ(lower.bytes.size(), lower.status == 0 ? rawBytes(stream) : 0U);
    return lower.status;
}

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

    Decoded decompress(const Bytes& stream, const std::string& word) {
        test::writeFile(folder / "in.tk", stream);
        Decoded decoded;
        decoded.status = run(word + ' ' + folder / "in.tk" + ' ' + folder / "out.raw");
        decoded.bytes = test::readFile(folder / "out.raw");
        return decoded;
    }

    /// Checks that the tool does with a stream what the library does.
    void expectAsInLibrary(const Bytes& stream) {
        for (const bool upper : {false, true}) {
            const Decoded here = decompressHere(stream, upper);
            const Decoded there = decompress(stream, upper ? "D" : "d");
            EXPECT_EQ(here.status, there.status);
            EXPECT_TRUE(sameBytes(here.bytes, there.bytes));
        }
    }

    void expectToComeBack(const RawImage& image, const Bytes& stream) {
        for (const char* word : {"d", "D"}) {
            const Decoded decoded = decompress(stream, word);
            EXPECT_EQ(decoded.status, 0);
            EXPECT_TRUE(sameBytes(image.bytes, decoded.bytes));
        }
    }

    void TearDown() override {
        const Bytes errors = test::readFile(folder / "errors");
        EXPECT_EQ(std::string(errors.begin(), errors.end()), "");
    }
    void SetUp() override { test::writeFile(folder / "errors", {}); }

    test::TempDir folder;
};

struct Size {
    int width;
    int height;
};

/// Returns: images of all sample types.
std::vector<RawImage> imagesOf(Content content, const std::vector<Size>& sizes) {
    constexpr int kBytesAndBits[][2] = {{1, 8}, {3, 8}, {2, 9}, {2, 12}, {2, 13}, {2, 16}};
    std::vector<RawImage> images;
    for (const auto& [bytes, bits] : kBytesAndBits)
        for (const Size size : sizes)
            images.push_back(test::makeImage(content, bytes, bits, size.width, size.height));
    return images;
}

std::string nameOf(const RawImage& image) {
    return std::to_string(image.width) + " x " + std::to_string(image.height) + " pixels of " +
           std::to_string(image.bytesPerPixel) + " bytes, " + std::to_string(image.bitsPerPixel) +
           " bits";
}

Bytes headerOf(const RawImage& image) {
    const qmx::TKHeader header =
        qmx::makeHeader(image.bytesPerPixel, image.bitsPerPixel, image.width, image.height);
    Bytes bytes(sizeof header);
    std::memcpy(bytes.data(), &header, sizeof header);
    return bytes;
}

Bytes prefixOf(const Bytes& stream, std::size_t sizeBytes) {
    return {stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(sizeBytes)};
}

/// Flips one to three bits behind the header.
Bytes damaged(Bytes stream, test::Random& random) {
    for (std::uint64_t flips = 1 + random.below(3); flips > 0; --flips) {
        const std::uint64_t place = kHeaderBytes + random.below(stream.size() - kHeaderBytes);
        stream[place] ^= static_cast<unsigned char>(1U << random.below(8));
    }
    return stream;
}

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

TEST_F(Tool, LinesOfTheGreatestLengthPass) {
    for (const Size size : {Size{65535, 1}, {1, 65535}, {65535, 2}, {2, 65535}}) {
        const RawImage image = test::makeImage(Content::photo, 1, 8, size.width, size.height);
        SCOPED_TRACE(nameOf(image));
        const Bytes stream = compress(image, "c");
        EXPECT_EQ(expectSameImage(stream), 0);
        expectAsInLibrary(stream);
    }
}

TEST_F(Tool, StreamsCutAtEveryByteDecodeTheSameWithEitherWord) {
    for (const RawImage& image : imagesOf(Content::noise, {{8, 8}})) {
        const Bytes stream = compress(image, "c");
        for (std::size_t size = kHeaderBytes; size <= stream.size(); ++size) {
            SCOPED_TRACE(nameOf(image) + " cut to " + std::to_string(size) + " bytes");
            const Bytes cut = prefixOf(stream, size);
            EXPECT_EQ(expectSameImage(cut), 0);
            if (size % 50 == 0) expectAsInLibrary(cut);
        }
    }
}

TEST_F(Tool, DamagedStreamsDecodeTheSameWithEitherWord) {
    constexpr int kStreamsOfEachImage = 100;
    test::Random random(20);
    for (const RawImage& image : imagesOf(Content::photo, {{16, 16}, {33, 18}})) {
        const Bytes stream = compress(image, "c");
        for (int i = 0; i < kStreamsOfEachImage; ++i) {
            SCOPED_TRACE(nameOf(image) + ", stream " + std::to_string(i));
            const Bytes broken = damaged(stream, random);
            expectSameImage(broken);
            if (i % 25 == 0) expectAsInLibrary(broken);
        }
    }
}

TEST_F(Tool, StreamsOfRandomBytesDecodeTheSameForAllSmallSides) {
    std::vector<Size> sizes;
    for (int sides = 0; sides < 36; ++sides)
        sizes.push_back({sides / 6, sides % 6});
    test::Random random(30);
    for (const RawImage& image : imagesOf(Content::flat, sizes))
        for (const std::size_t count : {0U, 1U, 9U, 100U}) {
            SCOPED_TRACE(nameOf(image) + ", bytes " + std::to_string(count));
            Bytes stream = headerOf(image);
            while (stream.size() < kHeaderBytes + count)
                stream.push_back(static_cast<unsigned char>(random.below(256)));
            expectSameImage(stream);
        }
}

TEST_F(Tool, EveryTopPlaneByteDecodesTheSameWithEitherWord) {
    for (const RawImage& image : imagesOf(Content::noise, {{4, 4}})) {
        Bytes stream = compress(image, "c");
        for (unsigned top = 0; top < 256; ++top) {
            SCOPED_TRACE(nameOf(image) + ", top plane byte " + std::to_string(top));
            stream[kHeaderBytes] = static_cast<unsigned char>(top);
            expectSameImage(stream);
        }
    }
}

TEST_F(Tool, EveryBitDepthInAHeaderDecodesTheSameWithEitherWord) {
    for (const RawImage& image : imagesOf(Content::photo, {{16, 16}})) {
        Bytes stream = prefixOf(compress(image, "c"), 100);
        for (unsigned bits = 0; bits < 256; ++bits) {
            SCOPED_TRACE(nameOf(image) + ", now " + std::to_string(bits) + " bits");
            stream[5] = static_cast<unsigned char>(bits);
            EXPECT_EQ(expectSameImage(stream), 0);
        }
    }
}

TEST_F(Tool, EveryExtraNumberDecodesTheSameWithEitherWord) {
    for (const RawImage& image : imagesOf(Content::photo, {{16, 16}})) {
        const Bytes stream = compress(image, "c");
        for (const int extra : {-2147483647 - 1, -17, -16, -15, -5, -1, 1, 2, 20, 2147483647}) {
            SCOPED_TRACE(nameOf(image) + ", extra " + std::to_string(extra));
            EXPECT_EQ(expectSameImage(stream, extra), 0);
        }
    }
}

TEST_F(Tool, HundredsOfThousandsOfEmptySectionsTakeLittleTime) {
    Bytes stream = headerOf({3, 8, 64, 64, {}});
    stream.resize(kHeaderBytes + 1'000'000, 0);
    stream[kHeaderBytes] = 7;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(expectSameImage(stream), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

}  // namespace

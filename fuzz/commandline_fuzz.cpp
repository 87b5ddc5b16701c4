// Any words as a command line: parsing takes all of them, and the numbers that follow from them are
// defined.

#include <string>

#include "FuzzInput.h"
#include "cli/CommandLine.h"
#include "container/Budget.h"

namespace {

constexpr std::size_t kMostWords = 12;

/// Returns: the input, split at zero bytes.
std::vector<std::string> wordsOf(const fuzz::Bytes& bytes) {
    std::vector<std::string> words(1);
    for (const unsigned char byte : bytes) {
        if (byte != 0) {
            words.back().push_back(static_cast<char>(byte));
        } else if (words.size() < kMostWords) {
            words.emplace_back();
        }
    }
    return words;
}

void checkBudgets(const qmx::CommandLine& line) {
    const qmx::RawGeometry& g = line.geometry;
    const qmx::TKHeader header =
        qmx::makeHeader(g.bytesPerPixel, g.bitsPerPixel, g.width, g.height);
    qmx::streamBudgetBytes(header, line.rate);
    qmx::truncateToUnsigned(static_cast<double>(header.rawBytes()) * line.rate);
    fuzz::require(
        !header.isSupported() || qmx::completeStreamBoundBytes(header, 32) >= header.rawBytes(),
        "the bound is above the raw size");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    const std::vector<std::string> words = wordsOf(input.rest());
    std::vector<const char*> argv{"tesk"};
    for (const std::string& word : words)
        argv.push_back(word.c_str());
    const int argc = static_cast<int>(argv.size());
    argv.push_back(nullptr);

    const auto line = qmx::parseCommandLine(argc, argv.data());
    if (!line) return 0;
    fuzz::require(line->inputName == argv[2], "the third word is the input");
    const bool isDecompression = line->action == qmx::Action::decompress;
    fuzz::require(line->otherName == argv[isDecompression ? 3 : 7], "the output has its place");
    fuzz::require(!line->inMemory || argv[1][1] == 'c', "a second letter chooses the objects");
    checkBudgets(*line);
    return 0;
}

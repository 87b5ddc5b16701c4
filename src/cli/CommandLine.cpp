#include "cli/CommandLine.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace qmx {
namespace {

constexpr char kUsage[] =
    "Usage:\n"
    "tesk c|C rawfile bytes/pixel bits/pixel xsize ysize wavfile [rate]\n"
    "tesk d|D wavfile rawfile\n"
    "\n"
    "tesk m rawfile1 bytes/pixel bits/pixel xsize ysize rawfile2\n"
    "\n"
    "(uppercase denotes compression/decompression stream to/from memory)";

long parseLong(const char* text) {
    return std::strtol(text, nullptr, 10);
}

RawGeometry parseGeometry(const char* const* first) {
    return {parseLong(first[0]), parseLong(first[1]), parseLong(first[2]), parseLong(first[3])};
}

/// tesk WORD rawfile bytes/pixel bits/pixel xsize ysize otherfile [rate [extra]]
CommandLine parseRawFileMode(Action action, int argc, const char* const* argv) {
    CommandLine line;
    line.action = action;
    line.inputName = argv[2];
    line.geometry = parseGeometry(argv + 3);
    line.otherName = argv[7];
    if (argc > 8) line.rate = std::strtod(argv[8], nullptr);
    if (argc > 9) line.rowOrSections = static_cast<int>(parseLong(argv[9]));
    return line;
}

/// tesk WORD streamfile rawfile [extra]
CommandLine parseStreamFileMode(int argc, const char* const* argv) {
    CommandLine line;
    line.action = Action::decompress;
    line.inputName = argv[2];
    line.otherName = argv[3];
    if (argc > 4) line.rowOrSections = static_cast<int>(parseLong(argv[4]));
    return line;
}

}  // namespace

std::optional<CommandLine> parseCommandLine(int argc, const char* const* argv) {
    if (argc < 2) return std::nullopt;
    const char* word = argv[1];
    if (std::strcmp(word, "m") == 0 && argc == 8)
        return parseRawFileMode(Action::compare, argc, argv);

    const char mode = word[0];
    const bool inMemory = mode != 0 && word[1] == 'c';  // what follows does not matter
    const bool throughFiles = mode != 0 && word[1] == 0;
    if (!inMemory && !throughFiles) return std::nullopt;
    std::optional<CommandLine> line;
    if ((mode == 'c' || mode == 'C') && argc >= 8 && argc <= 10)
        line = parseRawFileMode(Action::compress, argc, argv);
    if ((mode == 'd' || mode == 'D') && (argc == 4 || argc == 5))
        line = parseStreamFileMode(argc, argv);
    if (line) line->inMemory = inMemory;
    if (line) line->staged = mode == 'C' || mode == 'D';
    return line;
}

int usage(int status) {
    std::puts(kUsage);
    return status;
}

}  // namespace qmx

#include "convert/OutputName.h"

#include "convert/Refusal.h"

namespace qmx {
namespace {

constexpr std::string_view kStreamEnding = ".tk";

/// Returns: a name that has the ending once, whatever it had. Requires: there is a format with this ending.
OutputName outputWithEnding(std::string name, const std::string& ending) {
    const FileFormat format = *formatOfEnding(ending);
    if (formatOfName(name) == FileFormat::stream) name.resize(name.size() - kStreamEnding.size());
    if (formatOfName(name) != format) name += "." + ending;
    return {name, format};
}

}  // namespace

OutputName namedOutput(const std::string& argument) {
    std::string_view rest = argument;
    std::optional<FileFormat> format = takeFormat(rest);
    if (format && rest.empty()) throw Refusal{"there is no name behind '" + argument + "'"};
    if (!format && rest == "-") format = FileFormat::stream;
    if (!format) format = formatOfName(rest);
    if (!format)
        throw Refusal{"the output '" + argument +
                      "' has no ending of a format: begin it with one, as png:" + argument};
    return {rest == "-" ? "" : std::string(rest), *format};
}

OutputName derivedOutput(const std::string& input, bool isStreamInput,
                         const std::string& imageEnding) {
    if (!isStreamInput) return {input + std::string(kStreamEnding), FileFormat::stream};
    if (!imageEnding.empty()) return outputWithEnding(input, imageEnding);
    if (formatOfName(input) != FileFormat::stream)
        throw Refusal{
            "is a stream whose name does not end in .tk: name an OUTPUT, or say --to png"};
    const std::string name = input.substr(0, input.size() - kStreamEnding.size());
    // A stream that was not made from a file of ours has no other ending.
    const std::size_t nameAt = name.rfind('/') + 1;
    if (name.find('.', nameAt) == std::string::npos) return {name + ".png", FileFormat::png};
    const auto format = formatOfName(name);
    if (!format || *format == FileFormat::stream)
        throw Refusal{"'" + name + "' would have no ending of a format: name an OUTPUT, as png:" +
                      name + ", or say --to png"};
    return {name, *format};
}

}  // namespace qmx

#include "convert/ConvertArguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

#include "convert/FileFormat.h"

namespace qmx {
namespace {

constexpr unsigned kMostJobs = 1024;
constexpr unsigned kMostBits = 16;
constexpr unsigned kMostLevels = 16;

/// Reads a number with K, M or G behind it, each `unit` times the one before.
std::uint64_t scaledNumber(const std::string& option, const std::string& text, std::uint64_t unit) {
    constexpr std::string_view kPrefixes = "KMGkmg";
    std::uint64_t value = 0;
    const char* const end = text.data() + text.size();
    auto [next, error] = std::from_chars(text.data(), end, value);
    std::size_t steps = 0;
    if (error == std::errc() && next != end) {
        const std::size_t at = kPrefixes.find(*next++);
        steps = at % 3 + 1;
        if (at == kPrefixes.npos) error = std::errc::invalid_argument;
    }
    bool isWrong = error != std::errc() || next != end;
    for (; !isWrong && steps > 0; --steps)
        isWrong = __builtin_mul_overflow(value, unit, &value);
    if (isWrong)
        throw CLI::ValidationError(
            option, "'" + text + "' is neither a number nor one with K, M or G behind it");
    if (value == 0) throw CLI::ValidationError(option, "must be above 0");
    return value;
}

double positiveNumber(const std::string& option, const std::string& text) {
    double value = 0;
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, value);
    const bool isNumber = error == std::errc() && next == end && value > 0 && std::isfinite(value);
    if (!isNumber) throw CLI::ValidationError(option, "'" + text + "' is no number above 0");
    return value;
}

/// The options, and what does not go into them as it stands.
class CConvertParser {
public:
    CConvertParser() : app("", "tesk-convert") {
        app.set_help_flag();
        // As an option of names, "[a,b]" would be two of them.
        app.allow_extras();
        addFiles();
        addImages();
        addReports();
    }

    ConvertArguments parse(int argc, const char* const* argv);

private:
    void addFiles();
    void addImages();
    void addReports();
    void addBudgets();
    void takeNames();
    std::string complaintAboutNames();
    std::string complaintAboutPairs() const;

    CLI::App app;
    ConvertOptions options;
    std::vector<std::string> names;
    bool asksHelp = false;
    bool asksVersion = false;
};

void CConvertParser::addFiles() {
    app.add_option("-d,--directory", options.folder);
    app.add_flag("-r,--recursive", options.isRecursive);
    app.add_option_function<std::string>("--only", [this](const std::string& kind) {
        if (kind != "images" && kind != "streams")
            throw CLI::ValidationError("--only",
                                       "'" + kind + "' is neither 'images' nor 'streams'");
        options.only = kind == "images" ? OnlyKind::images : OnlyKind::streams;
    });
    app.add_option_function<std::string>("--to", [this](const std::string& ending) {
        const auto format = formatOfEnding(ending);
        // Few images are of two values.
        if (!format || format == FileFormat::stream || format == FileFormat::pbm)
            throw CLI::ValidationError(
                "--to", "'" + ending + "' is none of png, tif, pgm, ppm, pnm, pam, npy and raw");
        options.imageEnding = ending;
    });
    app.add_option("-j,--jobs", options.jobs)->check(CLI::Range(0U, kMostJobs));
    app.add_flag("--resume", options.resumes);
    app.add_flag("-f,--force", options.overwrites);
    app.add_flag("--rm", options.removesInputs);
    app.add_flag("--check", options.onlyChecks);
}

void CConvertParser::addImages() {
    app.add_option_function<std::string>("--raw", [this](const std::string& text) {
        options.raw = parseRawLayout(text);
        if (!options.raw)
            throw CLI::ValidationError(
                "--raw", "'" + text + "' is not as 640x480:gray12 or 640x480:rgb8+16");
    });
    addBudgets();
    app.add_option_function<std::string>("--bits", [this](const std::string& text) {
        const auto [end, error] =
            std::from_chars(text.data(), text.data() + text.size(), options.bits);
        const bool isNumber = error == std::errc() && end == text.data() + text.size() &&
                              options.bits >= 1 && options.bits <= kMostBits;
        if (!isNumber && text != "auto")
            throw CLI::ValidationError("--bits", "'" + text + "' is neither 1 to 16 nor auto");
    });
    app.add_flag("--bare", options.isBare);
    app.add_flag("--drop-metadata", options.dropsMetadata);
    app.add_flag("--opaque", options.reading.leavesOutOpaqueAlpha);
    app.add_flag("--strict", options.isStrict);
    app.add_option("--reduce", options.reduceLevels)->check(CLI::Range(0U, kMostLevels));
    app.add_option("--thumbnail", options.thumbnailSide)->check(CLI::Range(1U, 65535U));
    app.add_option_function<std::string>("--max-pixels", [this](const std::string& text) {
        options.reading.mostPixels = scaledNumber("--max-pixels", text, 1000);
    });
}

void CConvertParser::addBudgets() {
    CLI::Option* bytes =
        app.add_option_function<std::string>("--bytes", [this](const std::string& text) {
            options.budget.bytes = scaledNumber("--bytes", text, 1024);
            if (options.budget.bytes < kStreamHeadBytes)
                throw CLI::ValidationError("--bytes", "a stream has at least 16 bytes");
        });
    CLI::Option* rate = app.add_option_function<std::string>(
        "--rate",
        [this](const std::string& text) { options.budget.rate = positiveNumber("--rate", text); });
    CLI::Option* bits =
        app.add_option_function<std::string>("--bits-per-sample", [this](const std::string& text) {
            options.budget.bitsPerSample = positiveNumber("--bits-per-sample", text);
        });
    bytes->excludes(rate, bits);
    rate->excludes(bits);
}

void CConvertParser::addReports() {
    app.add_option("--log", options.logFile);
    app.add_flag("-q,--quiet", options.isQuiet);
    app.add_flag("-v,--verbose", options.isVerbose);
    app.add_flag("-h,--help", asksHelp);
    app.add_flag("--version", asksVersion);
}

/// Numbers below 0 are no options.
bool isOption(const std::string& word) {
    return word.size() > 1 && word[0] == '-' && word[1] != '.' && (word[1] < '0' || word[1] > '9');
}

/// Takes what is no option. Throws: CLI::ExtrasError for what looks like one.
void CConvertParser::takeNames() {
    std::vector<std::string> unknown;
    bool areOnlyNames = false;
    for (const std::string& word : app.remaining()) {
        if (!areOnlyNames && word == "--") {
            areOnlyNames = true;
        } else {
            (areOnlyNames || !isOption(word) ? names : unknown).push_back(word);
        }
    }
    if (!unknown.empty()) throw CLI::ExtrasError(unknown);
}

/// Tells inputs and output apart. Returns: what is wrong with them, or nothing.
std::string CConvertParser::complaintAboutNames() {
    if (names.empty()) return "no file is named";
    const bool areAllInputs = options.folder || options.isRecursive || options.onlyChecks;
    if (!areAllInputs && names.size() > 2)
        return "several inputs need -d FOLDER: -d . writes into this one";
    options.inputs = names;
    if (!areAllInputs && names.size() == 2) {
        options.output = names[1];
        options.inputs.pop_back();
    }
    const bool hasStandardInput =
        std::find(options.inputs.begin(), options.inputs.end(), "-") != options.inputs.end();
    if (hasStandardInput && (options.folder || options.isRecursive))
        return "the standard input has no name to give its output in a folder";
    if (hasStandardInput && options.removesInputs) return "--rm cannot remove the standard input";
    return "";
}

/// Returns: which options do not go together, or nothing.
std::string CConvertParser::complaintAboutPairs() const {
    const bool approximates =
        options.budget.isSet() || options.reduceLevels != 0 || options.thumbnailSide != 0;
    if (options.removesInputs && approximates)
        return "--rm does not go with an output that is an approximation: the image would be lost";
    const bool turnsRound = options.isRecursive && !options.folder && !options.onlyChecks &&
                            options.only == OnlyKind::all;
    if (options.overwrites && turnsRound)
        return "-f -r without -d needs --only images or --only streams: it would write over its "
               "inputs";
    if (options.removesInputs && turnsRound)
        return "--rm -r without -d needs --only images or --only streams: run again, it would turn "
               "round";
    if (options.reduceLevels != 0 && options.thumbnailSide != 0)
        return "--reduce and --thumbnail do not go together";
    if (options.output && !options.imageEnding.empty())
        return "--to does not go with OUTPUT, which says its format itself";
    if (options.isQuiet && options.isVerbose) return "-q and -v do not go together";
    if (options.onlyChecks && (options.folder || options.removesInputs || options.raw))
        return "--check writes nothing: it does not go with -d, --rm and --raw";
    return "";
}

ConvertArguments CConvertParser::parse(int argc, const char* const* argv) {
    ConvertArguments arguments;
    try {
        app.parse(argc, argv);
        takeNames();
        arguments.complaint = complaintAboutNames();
        if (arguments.complaint.empty()) arguments.complaint = complaintAboutPairs();
    } catch (const CLI::ParseError& error) {
        arguments.complaint = error.what();
    }
    arguments.options = options;
    if (asksHelp) {
        arguments.task = ConvertTask::help;
    } else if (asksVersion) {
        arguments.task = ConvertTask::version;
    } else if (!arguments.complaint.empty()) {
        arguments.task = ConvertTask::refuse;
    }
    return arguments;
}

}  // namespace

ConvertArguments parseConvertArguments(int argc, const char* const* argv) {
    return CConvertParser().parse(argc, argv);
}

}  // namespace qmx

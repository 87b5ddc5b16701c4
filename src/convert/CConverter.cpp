#include "convert/CConverter.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <new>
#include <unistd.h>

#include "convert/DecodeImage.h"
#include "convert/ImageChecks.h"
#include "convert/ImageReading.h"
#include "convert/ImageWriting.h"
#include "convert/Refusal.h"
#include "convert/TrailerBoxes.h"

namespace qmx {
namespace {

/// No format that is read takes more for a pixel, but for what surrounds the pixels.
constexpr std::uint64_t kMostBytesOfPixel = 24;
constexpr std::uint64_t kMostBytesAround = 1 << 28;
constexpr char kCutWords[] = "is cut: its image is an approximation";

std::uint64_t mostInputBytes(const ReadOptions& options) {
    return std::min<std::uint64_t>(options.mostPixels, PTRDIFF_MAX / 64) * kMostBytesOfPixel +
           kMostBytesAround;
}

bool exists(const std::string& name) {
    std::error_code error;
    return std::filesystem::exists(std::filesystem::symlink_status(name, error));
}

std::string strangeBytesWords(const TeskFile& opened) {
    return bytesInWords(opened.strangeBytes) +
           " behind its end are no trailer: it is damaged, or something was added";
}

}  // namespace

ConvertOutcome CConverter::convert(const ConvertJob& job) {
    ConvertOutcome outcome;
    outcome.input = job.input;
    try {
        if (!job.complaint.empty()) throw Refusal{job.complaint};
        if (!codec) codec.emplace();
        work(job, outcome);
    } catch (const Refusal& refusal) {
        outcome.refusal = refusal.words;
    } catch (const std::bad_alloc&) {
        outcome.refusal = "there is not enough memory for it";
    }
    if (!outcome.refusal.empty()) outcome.result = ConvertResult::refused;
    return outcome;
}

void CConverter::work(const ConvertJob& job, ConvertOutcome& outcome) {
    CInputFile file(job.input);
    if (options.onlyChecks) return check(file, outcome);
    const OutputName output = outputOf(job, isStreamInput(file), options);
    outcome.output = output.isStandardOutput() ? "-" : output.path;
    if (options.resumes && exists(output.path)) {
        outcome.result = ConvertResult::passedOver;
        return;
    }
    requireOutput(job, output, options);
    requireFormats(file, output.format);
    const OutputPlace place{output, outputRules(file.facts(), options)};
    Buffer content = file.readAll(mostInputBytes(options.reading));
    if (isStreamInput(file)) {
        decode(content.view(), place, outcome);
    } else {
        encode(std::move(content), place, outcome);
    }
    if (options.removesInputs) removeInput(job, file, outcome);
}

bool CConverter::isStreamInput(const CInputFile& file) const {
    return !options.raw && isStream(file.head());
}

/// Refuses by the first bytes what would be refused by all of them: files may be long, and films.
void CConverter::requireFormats(const CInputFile& file, FileFormat outputFormat) const {
    const bool isStreamOutput = outputFormat == FileFormat::stream;
    if (isStreamInput(file)) {
        if (!isStreamOutput) return;
        throw Refusal{"is a stream already: head -c cuts one, and an OUTPUT as png:x decodes it"};
    }
    if (!isStreamOutput)
        throw Refusal{"is an image, and so would be its output: a stream must be one of them"};
    if (!options.raw) {
        formatOfContent(file.head());
    } else if (file.announcedBytes()) {
        requireRawBytes(*file.announcedBytes(), *options.raw, options.reading);
    }
}

void CConverter::settleLosses(const std::vector<LostPart>& parts, ConvertOutcome& outcome) const {
    if (parts.empty() || (options.dropsMetadata && !options.isStrict)) return;
    if (options.isStrict)
        throw Refusal{namesOf(parts) + " would not be kept, which --strict refuses"};
    outcome.losesMetadata = true;
    const std::string note = noteOn(parts);
    if (!note.empty()) outcome.notes.push_back(note);
}

void CConverter::encode(Buffer file, const OutputPlace& place, ConvertOutcome& outcome) {
    const ImageFile image = readImage(std::move(file), options);
    outcome.notes = image.notes;
    settleLosses(writesTrailer() ? image.metadata.notKept : partsLostIn(FileFormat::stream, image),
                 outcome);
    compress(image, place, outcome);
    outcome.result = ConvertResult::converted;
}

void CConverter::compress(const ImageFile& image, const OutputPlace& place,
                          ConvertOutcome& outcome) {
    CTeskCodec::CBlock block;
    codec->compress(image, options.budget.isSet() ? options.budget.bytesFor(image) : 0, block);
    outcome.rawBytes = image.rawBytes();
    outcome.streamBytes = block.view().size();
    std::vector<unsigned char> trailer;
    if (writesTrailer()) trailer = trailerOf(image.metadata, block.view());
    writeOutput(place, [&](IByteSink& sink) {
        sink.write(block.view());
        sink.write(ByteView(trailer));
    });
}

void CConverter::decode(ByteView file, const OutputPlace& place, ConvertOutcome& outcome) {
    const TeskFile opened = openTeskFile(file);
    if (opened.strangeBytes != 0) outcome.notes.push_back(strangeBytesWords(opened));
    if (!opened.isComplete) outcome.notes.emplace_back(kCutWords);
    if (!opened.isWhole() && options.isStrict)
        throw Refusal{outcome.notes.back() + ", which --strict refuses"};
    ImageFile image = decodeImage(opened, place.name.format, options, *codec);
    outcome.rawBytes = image.rawBytes();
    outcome.streamBytes = opened.stream.size();
    settleLosses(partsLostIn(place.name.format, image), outcome);
    writeOutput(place, [&](IByteSink& sink) { writeImage(image, place.name.format, sink); });
    outcome.result = opened.isWhole() ? ConvertResult::converted : ConvertResult::approximated;
}

void CConverter::check(CInputFile& file, ConvertOutcome& outcome) {
    if (!isStream(file.head())) throw Refusal{"is no stream"};
    const Buffer content = file.readAll(mostInputBytes(options.reading));
    const TeskFile opened = openTeskFile(content.view());
    if (opened.strangeBytes != 0) throw Refusal{strangeBytesWords(opened)};
    if (!opened.isComplete && options.isStrict) throw Refusal{"is cut, which --strict refuses"};
    requirePixelCount(opened.geometry.width, opened.geometry.height, options.reading);
    ImageFile image;
    codec->decompress(opened.stream, 0, image);
    outcome.rawBytes = image.rawBytes();
    outcome.streamBytes = opened.stream.size();
    outcome.result = opened.isComplete ? ConvertResult::checked : ConvertResult::approximated;
    if (!opened.isComplete) {
        outcome.notes.emplace_back(kCutWords);
    } else if (!opened.hasChecksum) {
        outcome.notes.emplace_back("has no checksum: nothing can be said but that it decodes");
    }
}

void CConverter::removeInput(const ConvertJob& job, const CInputFile& file,
                             ConvertOutcome& outcome) const {
    if (outcome.result != ConvertResult::converted) return;
    if (outcome.losesMetadata) {
        outcome.notes.emplace_back(
            "is not removed, because not all of it is in its output: --drop-metadata lets it go");
        return;
    }
    if (!file.isStillAt(job.input))
        throw Refusal{"is not removed: it is another file than the one that was read"};
    if (unlink(job.input.c_str()) != 0)
        throw Refusal{std::string("cannot be removed: ") + std::strerror(errno)};
}

}  // namespace qmx

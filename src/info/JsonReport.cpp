// Reports as JSON. tesk-info(1) documents the members.

#include <cinttypes>

#include "info/JsonString.h"
#include "info/ReportOutput.h"

namespace qmx {
namespace {

void printNumber(std::FILE* out, const char* member, std::uint64_t value) {
    std::fprintf(out, "  \"%s\": %" PRIu64 ",\n", member, value);
}

void printGeometry(std::FILE* out, const StreamReport& stream) {
    const TKHeader& header = stream.header;
    printNumber(out, "width", header.xSize);
    printNumber(out, "height", header.ySize);
    printNumber(out, "bytes_per_pixel", header.bytesPerPixel);
    printNumber(out, "bits_per_pixel", header.bitsPerPixel);
    printNumber(out, "colour_planes", static_cast<std::uint64_t>(header.planes()));
    printNumber(out, "raw_bytes", header.rawBytes());
}

void printSizes(std::FILE* out, const StreamReport& stream) {
    printNumber(out, "file_bytes", stream.fileBytes);
    printNumber(out, "stream_bytes", stream.streamBytes);
    printNumber(out, "trailing_bytes", stream.trailingBytes());
    if (stream.samples() != 0) {
        std::fprintf(out, "  \"bits_per_sample\": %.9g,\n", stream.bitsPerSample());
    } else {
        std::fputs("  \"bits_per_sample\": null,\n", out);
    }
    if (stream.firstPictureBytes != 0) {
        printNumber(out, "first_picture_bytes", stream.firstPictureBytes);
    } else {
        std::fputs("  \"first_picture_bytes\": null,\n", out);
    }
}

void printCoding(std::FILE* out, const StreamReport& stream) {
    std::fprintf(out, "  \"coefficient_bits\": %d,\n  \"levels\": %d,\n", stream.coefficientBits,
                 stream.levels);
    if (stream.topPlane) {
        std::fprintf(out, "  \"top_plane\": %d,\n", *stream.topPlane);
    } else {
        std::fputs("  \"top_plane\": null,\n", out);
    }
    printNumber(out, "section_count", stream.sections);
    printNumber(out, "empty_section_count", stream.emptySections);
    printNumber(out, "rest_bits", stream.restBits);
}

void printTrailer(std::FILE* out, const std::optional<Trailer>& trailer) {
    if (!trailer) {
        std::fputs("  \"trailer\": null,\n", out);
        return;
    }
    std::fprintf(out,
                 "  \"trailer\": {\"bytes\": %" PRIu64 ", \"checksum\": \"%08" PRIx32
                 "\", \"boxes\": [",
                 trailer->sizeBytes(), trailer->crc);
    const char* separator = "";
    for (const TrailerBox& box : trailer->boxes) {
        std::fprintf(out, "%s{\"name\": %s, \"bytes\": %" PRIu32 "}", separator,
                     jsonString(box.name).c_str(), box.sizeBytes);
        separator = ", ";
    }
    std::fputs("]},\n", out);
}

void printSection(std::FILE* out, const PlacedSection& section) {
    const SectionHeader& header = section.header;
    std::fprintf(out,
                 "    {\"plane\": %d, \"order\": %d, \"kind\": \"%c\", \"bit_plane\": %" PRId64
                 ", \"byte\": %" PRIu64 ", \"bit\": %d, \"header_bits\": %" PRIu64
                 ", \"length_bits\": %" PRIu64 ", \"stored_bits\": %" PRIu64
                 ", \"empty\": %s, \"cut\": %s}",
                 header.plane, header.order, header.isRefinement ? 'u' : 'n', section.bitPlane,
                 byteOfStreamBit(section.firstBit), bitInByte(section.firstBit),
                 section.payloadBit - section.firstBit, header.lengthBits, section.storedBits,
                 section.isEmpty() ? "true" : "false", section.isCut() ? "true" : "false");
}

void printOpening(std::FILE* out, const char* name, const char* status) {
    std::fprintf(out, "{\n  \"file\": %s,\n  \"status\": \"%s\",\n", jsonString(name).c_str(),
                 status);
}

}  // namespace

void printJson(std::FILE* out, const FileReport& report) {
    printOpening(out, report.name, stateOf(report.stream));
    std::fprintf(out, "  \"checked\": %s,\n", report.isChecked ? "true" : "false");
    printGeometry(out, report.stream);
    printSizes(out, report.stream);
    printCoding(out, report.stream);
    printTrailer(out, report.stream.trailer);
    std::fputs("  \"sections\": [", out);
    const char* separator = "\n";
    forEachSection(report.file, [&](const PlacedSection& section) {
        std::fputs(separator, out);
        printSection(out, section);
        separator = ",\n";
    });
    std::fputs("\n  ]\n}\n", out);
}

void printJsonError(std::FILE* out, const char* name, const char* status, const char* message) {
    printOpening(out, name, status);
    std::fprintf(out, "  \"message\": %s\n}\n", jsonString(message).c_str());
}

const char* stateOf(const StreamReport& stream) {
    switch (stream.end) {
        case StreamEnd::complete:
            if (stream.isDamaged()) return "damaged";
            return stream.isDoubtful() ? "doubtful" : "complete";
        case StreamEnd::cut:
            return "cut";
        case StreamEnd::invalid:
            return "invalid";
    }
    return "";
}

}  // namespace qmx

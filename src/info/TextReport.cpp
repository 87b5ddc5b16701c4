// Reports as text.

#include <cinttypes>

#include "info/JsonString.h"
#include "info/ReportOutput.h"

namespace qmx {
namespace {

void printImage(std::FILE* out, const TKHeader& header) {
    const char* const kinds[] = {"8-bit gray", "16-bit gray", "8-bit red, green, blue"};
    std::fprintf(out, "  image          %d x %d pixels, %s: %d byte%s and %d bit%s per pixel\n",
                 header.xSize, header.ySize, kinds[header.bytesPerPixel - 1], header.bytesPerPixel,
                 header.bytesPerPixel == 1 ? "" : "s", header.bitsPerPixel,
                 header.bitsPerPixel == 1 ? "" : "s");
}

void printSize(std::FILE* out, const StreamReport& stream) {
    std::fprintf(out, "  size           %" PRIu64 " bytes", stream.streamBytes);
    const std::uint64_t rawBytes = stream.header.rawBytes();
    if (rawBytes != 0)
        std::fprintf(
            out, ": %.2f %% of %" PRIu64 " raw bytes, %.3f bits per sample",
            100.0 * static_cast<double>(stream.streamBytes) / static_cast<double>(rawBytes),
            rawBytes, stream.bitsPerSample());
    if (stream.trailingBytes() != 0)
        std::fprintf(out, "; %" PRIu64 " more behind its end", stream.trailingBytes());
    std::fputc('\n', out);
}

void printDoubt(std::FILE* out, const StreamReport& stream) {
    if (stream.trailingBytes() == 0) {
        std::fputs(": it ends behind the place where its trailer begins", out);
        return;
    }
    std::fprintf(out,
                 ": %" PRIu64 " byte%s its end mark, so it probably does not restore its image",
                 stream.trailingBytes(), stream.trailingBytes() == 1 ? " follows" : "s follow");
}

void printState(std::FILE* out, const FileReport& report) {
    const StreamReport& stream = report.stream;
    std::fprintf(out, "  state          %s", stateOf(stream));
    if (report.isChecked && stream.end != StreamEnd::invalid) std::fputs(", decodes", out);
    if (stream.end == StreamEnd::invalid)
        std::fprintf(out, ": what begins at byte %" PRIu64 ", bit %d, is no section of this image",
                     byteOfStreamBit(stream.endBit), bitInByte(stream.endBit));
    if (stream.isDoubtful()) printDoubt(out, stream);
    if (stream.isDamaged())
        std::fprintf(out,
                     ": the checksum of what is here is %08" PRIx32 ", its trailer says %08" PRIx32,
                     *stream.checksum, stream.trailer->crc);
    std::fputc('\n', out);
}

void printTopPlane(std::FILE* out, const StreamReport& stream) {
    if (stream.topPlane) {
        std::fprintf(out, "  top plane      %d, in %d-bit coefficients\n", *stream.topPlane,
                     stream.coefficientBits);
    } else {
        std::fputs("  top plane      missing\n", out);
    }
}

void printFirstPicture(std::FILE* out, const StreamReport& stream) {
    if (stream.firstPictureBytes != 0) {
        std::fprintf(out, "  first picture  %" PRIu64 " bytes\n", stream.firstPictureBytes);
    } else {
        std::fputs("  first picture  none\n", out);
    }
}

void printTrailer(std::FILE* out, const Trailer& trailer) {
    std::fputs("  trailer        checksum", out);
    for (const TrailerBox& box : trailer.boxes) {
        const std::size_t nameBytes = box.name.find_last_not_of(' ') + 1;
        std::fprintf(out, ", %s %" PRIu32 " byte%s",
                     onOneLine(box.name.substr(0, nameBytes)).c_str(), box.sizeBytes,
                     box.sizeBytes == 1 ? "" : "s");
    }
    std::fputc('\n', out);
}

void printTable(std::FILE* out, const CStreamFile& file) {
    std::fputs("       byte bit  plane order kind bit-plane  header     length     stored\n", out);
    forEachSection(file, [=](const PlacedSection& section) {
        const SectionHeader& header = section.header;
        std::fprintf(out,
                     " %10" PRIu64 "   %d      %d     %d    %c %9" PRId64 " %7" PRIu64 " %10" PRIu64
                     " %10" PRIu64 "%s\n",
                     byteOfStreamBit(section.firstBit), bitInByte(section.firstBit), header.plane,
                     header.order, header.isRefinement ? 'u' : 'n', section.bitPlane,
                     section.payloadBit - section.firstBit, header.lengthBits, section.storedBits,
                     section.isCut() ? "  cut" : "");
    });
}

}  // namespace

void printText(std::FILE* out, const FileReport& report, bool listsSections) {
    const StreamReport& stream = report.stream;
    std::fprintf(out, "%s:\n", onOneLine(report.name).c_str());
    printImage(out, stream.header);
    printSize(out, stream);
    printState(out, report);
    std::fprintf(out, "  levels         %d\n", stream.levels);
    printTopPlane(out, stream);
    std::fprintf(out, "  sections       %" PRIu64 ", %" PRIu64 " of them empty\n", stream.sections,
                 stream.emptySections);
    printFirstPicture(out, stream);
    if (stream.trailer) printTrailer(out, *stream.trailer);
    if (listsSections) printTable(out, report.file);
}

}  // namespace qmx

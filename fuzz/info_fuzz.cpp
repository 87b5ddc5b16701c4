// Any bytes as a file for tesk-info: it finds the end that the decoder finds, all bits of the file are
// accounted for, and both ways to print them end.

#include <string>
#include <sys/mman.h>
#include <unistd.h>

#include "FuzzInput.h"
#include "FuzzMemory.h"
#include "info/CheckStream.h"
#include "info/ReportOutput.h"

namespace {

/// Decoding larger images would be slow.
constexpr std::uint64_t kMostPixels = 1U << 14;

/// A file in memory, which has a name.
class NamedMemory {
public:
    NamedMemory(const std::uint8_t* data, std::size_t size) : number(memfd_create("fuzz", 0)) {
        fuzz::require(write(number, data, size) == static_cast<ssize_t>(size), "bytes fit a file");
        name = "/proc/self/fd/" + std::to_string(number);
    }
    NamedMemory(const NamedMemory&) = delete;
    NamedMemory& operator=(const NamedMemory&) = delete;
    ~NamedMemory() { close(number); }

    std::string name;

private:
    int number;
};

void checkBits(const qmx::CStreamFile& file, const qmx::StreamReport& report) {
    std::uint64_t next = report.topPlane ? 8 : 0;
    std::uint64_t sections = 0;
    qmx::forEachSection(file, [&](const qmx::PlacedSection& section) {
        fuzz::require(section.firstBit == next, "a section begins where the last one ended");
        next = section.endBit();
        ++sections;
    });
    fuzz::require(sections == report.sections, "every walk meets the same sections");
    fuzz::require(next + report.restBits == file.dataBits(), "there is no bit of nobody");
    fuzz::require(report.firstPictureBytes <= report.fileBytes, "a first picture is in the file");
}

void checkTrailer(const qmx::CStreamFile& file, const qmx::StreamReport& report) {
    if (!report.trailer) return;
    const qmx::Trailer& trailer = *report.trailer;
    fuzz::require(report.end == qmx::StreamEnd::complete && !report.isDoubtful(),
                  "a trailer is behind a complete stream");
    fuzz::require(trailer.streamBytes + trailer.sizeBytes() == report.fileBytes,
                  "a trailer is all that is behind it");
    qmx::checksumOf(file, trailer);
}

void print(const qmx::FileReport& report) {
    std::FILE* nowhere = std::fopen("/dev/null", "w");
    fuzz::require(nowhere != nullptr, "there is a place for output");
    qmx::printText(nowhere, report, true);
    qmx::printJson(nowhere, report);
    std::fclose(nowhere);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::MemoryLimit limit;
    const NamedMemory memory(data, size);
    const qmx::CStreamFile file(memory.name.c_str());
    if (!file.hasHeader() || !file.getHeader().isSupported()) return 0;
    const qmx::StreamReport report = qmx::describeStream(file);
    checkBits(file, report);
    checkTrailer(file, report);
    print({memory.name.c_str(), file, report, false});
    if (std::uint64_t{report.header.xSize} * report.header.ySize <= kMostPixels)
        fuzz::require(qmx::decodeStream(file) == report.end, "the decoder finds the same end");
    return 0;
}

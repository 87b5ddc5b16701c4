#include "info/DescribeFile.h"

#include <cstring>
#include <new>

#include "info/CheckStream.h"
#include "info/JsonString.h"
#include "info/ReportOutput.h"

namespace qmx {
namespace {

/// Why a file cannot be described: its status in JSON, and a message without its name.
struct Refusal {
    InfoStatus status;
    const char* jsonStatus;
    std::string message;
};

Refusal refusalOf(const FileError& error) {
    const bool isTemporary = error.role == FileRole::temporary;
    return {
        InfoStatus::unreadable, "unreadable",
        (isTemporary ? "no temporary file: " : "") + std::string(std::strerror(error.errorNumber))};
}

/// Requires: file has no header.
Refusal refusalOf(const CStreamFile& file) {
    const bool endsInHeader = file.getHeader().isRecognised();
    return {InfoStatus::noStream, "not-a-stream",
            endsInHeader ? "ends inside the header" : "not a stream of tesk"};
}

Refusal refusalOf(const TKHeader& header) {
    return {InfoStatus::noStream, "unsupported",
            std::to_string(header.bytesPerPixel) + " bytes per pixel are not supported"};
}

InfoStatus refuse(const char* name, const Refusal& refusal, bool asJson) {
    // The line of standard error comes behind what was printed before it, where both are one file.
    if (asJson) printJsonError(stdout, name, refusal.jsonStatus, refusal.message.c_str());
    std::fflush(stdout);
    const char* format = refusal.status == InfoStatus::unreadable
                             ? "tesk-info: cannot read '%s': %s\n"
                             : "tesk-info: '%s': %s\n";
    std::fprintf(stderr, format, onOneLine(name).c_str(), refusal.message.c_str());
    return refusal.status;
}

/// Throws: FileError, std::bad_alloc, both before anything is printed; Refusal.
InfoStatus describeStreamFile(const char* name, const InfoArguments& arguments) {
    const CStreamFile file(name);
    if (!file.hasHeader()) throw refusalOf(file);
    if (!file.getHeader().isSupported()) throw refusalOf(file.getHeader());
    FileReport report{name, file, describeStream(file), arguments.decodes};
    if (arguments.decodes) checkStream(file, report.stream);
    if (arguments.asJson) {
        printJson(stdout, report);
    } else {
        printText(stdout, report, arguments.listsSections);
    }
    return arguments.decodes ? checkedStatusOf(report.stream) : InfoStatus::fine;
}

}  // namespace

InfoStatus checkedStatusOf(const StreamReport& report) {
    switch (report.end) {
        case StreamEnd::complete:
            return report.isDoubtful() || report.isDamaged() ? InfoStatus::invalid
                                                             : InfoStatus::fine;
        case StreamEnd::cut:
            return InfoStatus::cut;
        case StreamEnd::invalid:
            return InfoStatus::invalid;
    }
    return InfoStatus::invalid;
}

InfoStatus describeFile(const char* name, const InfoArguments& arguments) {
    try {
        return describeStreamFile(name, arguments);
    } catch (const FileError& error) {
        return refuse(name, refusalOf(error), arguments.asJson);
    } catch (const Refusal& refusal) {
        return refuse(name, refusal, arguments.asJson);
    } catch (const std::bad_alloc&) {
        return refuse(name, {InfoStatus::outOfMemory, "out-of-memory", "out of memory"},
                      arguments.asJson);
    }
}

}  // namespace qmx

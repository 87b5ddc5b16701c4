#pragma once

#include <cstdio>

#include "info/StreamReport.h"

namespace qmx {

// How a report is printed. Sections are read from the file while they are printed: a stream may have
// millions of them. Errors of output are left to whoever flushes it.

/// A report on a file, with what is printed about it.
struct FileReport {
    const char* name;
    const CStreamFile& file;
    StreamReport stream;
    /// The stream was decoded, and the decoder found the end that stream says.
    bool isChecked;
};

/// Prints a few aligned lines, and a table of all sections if listsSections.
void printText(std::FILE* out, const FileReport& report, bool listsSections);
/// Prints one document with all sections.
void printJson(std::FILE* out, const FileReport& report);
/// Prints a document for a file that cannot be described. Requires: status is one of those that
/// tesk-info(1) lists; message says why.
void printJsonError(std::FILE* out, const char* name, const char* status, const char* message);

/// Returns: "complete", "damaged", "doubtful", "cut" or "invalid".
const char* stateOf(const StreamReport& stream);

/// Calls print(section) for all sections of a stream.
template <class Print>
void forEachSection(const CStreamFile& file, Print print) {
    CBitFileReader bits = file.bits();
    CSectionWalk walk(bits, file.dataBits(), sectionBoundsOf(file.getHeader()));
    for (PlacedSection section; walk.next(section);)
        print(section);
}

}  // namespace qmx

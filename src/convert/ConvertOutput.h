#pragma once

#include "convert/COutputFile.h"
#include "convert/ConvertJob.h"
#include "convert/ConvertOptions.h"

namespace qmx {

/// Returns: where the output of a job goes. Throws: Refusal where its name says no format.
OutputName outputOf(const ConvertJob& job, bool isStreamInput, const ConvertOptions& options);

/// Refuses before any work what would be refused after it, and makes the folders that are needed.
/// Throws: Refusal.
void requireOutput(const ConvertJob& job, const OutputName& output, const ConvertOptions& options);

/// Where an output goes, and how.
struct OutputPlace {
    OutputName name;
    OutputRules rules;
};

/// Returns: the rules of the output of a file. It is for the same eyes; in place of the file it has its times, too.
OutputRules outputRules(const struct stat& inputFacts, const ConvertOptions& options);

/// Calls write(sink), then lets the output have its name. Throws: Refusal.
template <class Write>
void writeOutput(const OutputPlace& place, const Write& write) {
    if (place.name.isStandardOutput()) {
        CStandardOutput sink;
        write(sink);
        return;
    }
    COutputFile file(place.name.path, place.rules);
    write(file);
    file.finish();
}

}  // namespace qmx

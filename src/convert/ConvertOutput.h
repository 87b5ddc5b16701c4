#pragma once

#include "convert/COutputFile.h"
#include "convert/ConvertJob.h"
#include "convert/ConvertOptions.h"

namespace qmx {

/// Returns: where the output of a job goes. Throws: Refusal where its name says no format.
OutputName outputOf(const ConvertJob& job, bool isStreamInput);

/// Refuses before any work what would be refused after it, and makes the folders that are needed.
/// Throws: Refusal.
void requireOutput(const ConvertJob& job, const OutputName& output, const ConvertOptions& options);

/// Calls write(sink), then lets the output have its name. Throws: Refusal.
template <class Write>
void writeOutput(const OutputName& output, const ConvertOptions& options, const Write& write) {
    if (output.isStandardOutput()) {
        CStandardOutput sink;
        write(sink);
        return;
    }
    COutputFile file(output.path, {options.overwrites, options.removesInputs});
    write(file);
    file.finish();
}

}  // namespace qmx

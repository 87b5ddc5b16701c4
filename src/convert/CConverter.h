#pragma once

#include <optional>

#include "convert/CInputFile.h"
#include "convert/CTeskCodec.h"
#include "convert/ConvertJob.h"
#include "convert/ConvertOptions.h"
#include "convert/ConvertOutput.h"

namespace qmx {

/// Converts one file after another, for one thread.
class CConverter {
public:
    /// Requires: convertOptions outlives this object.
    explicit CConverter(const ConvertOptions& convertOptions) : options(convertOptions) {}

    /// What goes wrong with a file stands in its outcome.
    ConvertOutcome convert(const ConvertJob& job);

private:
    void work(const ConvertJob& job, ConvertOutcome& outcome);
    void requireFormats(const CInputFile& file, FileFormat outputFormat) const;
    void encode(Buffer file, const OutputPlace& place, ConvertOutcome& outcome);
    void compress(const ImageFile& image, const OutputPlace& place, ConvertOutcome& outcome);
    void decode(ByteView file, const OutputPlace& place, ConvertOutcome& outcome);
    void check(CInputFile& file, ConvertOutcome& outcome);
    bool isStreamInput(const CInputFile& file) const;
    void settleLosses(const std::vector<LostPart>& parts, ConvertOutcome& outcome) const;
    void removeInput(const ConvertJob& job, const CInputFile& file, ConvertOutcome& outcome) const;
    bool writesTrailer() const { return !options.isBare && !options.budget.isSet(); }

    const ConvertOptions& options;
    /// Made for the first file, which is refused where there is no memory for it.
    std::optional<CTeskCodec> codec;
};

}  // namespace qmx

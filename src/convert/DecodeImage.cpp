#include "convert/DecodeImage.h"

#include <algorithm>

#include "convert/ImageChecks.h"
#include "convert/ImageWriting.h"
#include "convert/Refusal.h"
#include "convert/Thumbnail.h"

namespace qmx {
namespace {

/// Returns: the geometry at 1 : 2^levels. Throws: Refusal.
tesk_image requireReduced(const TeskFile& opened, std::uint32_t levels) {
    tesk_image reduced = TESK_IMAGE_INIT;
    if (tesk_reduced_image(&opened.geometry, levels, &reduced) != TESK_OK)
        throw Refusal{"cannot be reduced to 1 : 2^" + std::to_string(levels) +
                      ": its stream has fewer levels"};
    return reduced;
}

/// A thumbnail is a picture to look at: of what is said about the image only the colours matter.
Metadata metadataOfThumbnail(const Metadata& metadata) {
    Metadata kept;
    kept.icc = metadata.icc;
    return kept;
}

Metadata metadataOfReduced(Metadata metadata, std::uint32_t levels) {
    // Sums of samples, which these are, may exceed the largest one.
    if (levels > 0) metadata.maxValue = 0;
    if (metadata.resolution) {
        metadata.resolution->pixelsPerMetreX =
            std::max(metadata.resolution->pixelsPerMetreX >> levels, 1U);
        metadata.resolution->pixelsPerMetreY =
            std::max(metadata.resolution->pixelsPerMetreY >> levels, 1U);
    }
    return metadata;
}

}  // namespace

ImageFile decodeImage(const TeskFile& opened, FileFormat format, const ConvertOptions& options,
                      CTeskCodec& codec) {
    const bool isThumbnail = options.thumbnailSide != 0;
    const std::uint32_t levels =
        isThumbnail ? levelsForSide(opened.geometry, options.thumbnailSide) : options.reduceLevels;
    tesk_image expected = requireReduced(opened, levels);
    requirePixelCount(expected.width, expected.height, options.reading);
    if (isThumbnail) expected = eightBitGeometry(expected);
    requireHolds(format, expected);
    ImageFile image;
    codec.decompress(opened.stream, levels, image);
    // The samples may have more bits than the stream declares.
    if (!isThumbnail) requireHolds(format, image.geometry);
    image.metadata = isThumbnail ? metadataOfThumbnail(opened.metadata)
                                 : metadataOfReduced(opened.metadata, levels);
    if (isThumbnail) makeThumbnail(image, options.thumbnailSide);
    return image;
}

}  // namespace qmx

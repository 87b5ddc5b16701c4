// The calls of the C interface that take and give an image row by row.

#include "api/COutputBlock.h"
#include "api/CodecHandle.h"

namespace qmx {
namespace {

/// Runs the first call for an image. Requires: begin(memory) returns a status.
template <class Begin>
tesk_status beginRows(tesk_codec& codec, const TKHeader& header, Begin begin) {
    const tesk_status status = checkPixels(codec, header);
    if (status != TESK_OK) return status;
    CCallMemory& memory = codec.rowMemory.emplace(codec.kept, codec.maxMemoryBytes);
    const tesk_status begun = guarded(memory, [&] {
        return memory.allows(leastBytes(header)) ? begin(memory) : TESK_LIMIT_EXCEEDED;
    });
    if (begun != TESK_OK) tesk_abandon(&codec);
    return begun;
}

template <class Work>
tesk_status unlessStopped(tesk_codec& codec, Work work) {
    return codec.isStopped() ? TESK_STOPPED : guarded(*codec.rowMemory, std::move(work));
}

/// Runs another call for the image; it ends it unless the status is TESK_OK.
template <class Work>
tesk_status goOn(tesk_codec& codec, Work work) {
    const tesk_status status = unlessStopped(codec, std::move(work));
    if (status != TESK_OK) tesk_abandon(&codec);
    return status;
}

/// Runs the last call for the image.
template <class Work>
tesk_status endRows(tesk_codec& codec, tesk_result* result, Work work) {
    const tesk_status status = unlessStopped(codec, std::move(work));
    if (result != nullptr) result->peak_memory_bytes = codec.rowMemory->peakBytes();
    tesk_abandon(&codec);
    return status;
}

/// Returns: whether there are that many rows, memory for them, and addresses.
bool isValid(std::uint32_t count, std::uint32_t rowsLeft, const void* rows, std::size_t strideBytes,
             const TKHeader& header) {
    const bool hasBytes = count != 0 && header.rawRowBytes() != 0;
    return count <= rowsLeft && strideBytes != 0 && (rows != nullptr || !hasBytes) &&
           std::in_range<std::ptrdiff_t>(std::uint64_t{count} * strideBytes);
}

}  // namespace
}  // namespace qmx

tesk_status tesk_compress_begin(tesk_codec* codec, const tesk_image* image, size_t budgetBytes) {
    qmx::TKHeader header;
    const tesk_status status = qmx::checkCompression(codec, image, budgetBytes, header);
    if (status != TESK_OK) return status;
    return qmx::beginRows(*codec, header, [&](qmx::CCallMemory& memory) {
        codec->rowCompression = qmx::makeObject<qmx::CRowCompression>(
            &memory, header, codec->flags, budgetBytes, &memory, codec->stopRequested);
        return TESK_OK;
    });
}

tesk_status tesk_compress_rows(tesk_codec* codec, const void* rows, size_t rowStrideBytes,
                               uint32_t rowCount) {
    if (codec == nullptr || codec->rowCompression == nullptr) return TESK_INVALID_ARGUMENT;
    qmx::CRowCompression& image = *codec->rowCompression;
    const std::size_t stride = qmx::strideOrDefault(rowStrideBytes, image.header());
    if (!qmx::isValid(rowCount, image.rowsLeft(), rows, stride, image.header()))
        return TESK_INVALID_ARGUMENT;
    return qmx::goOn(*codec, [&] {
        return image.push(static_cast<const unsigned char*>(rows), stride, rowCount);
    });
}

tesk_status tesk_compress_end(tesk_codec* codec, void** block, tesk_result* result) {
    if (block == nullptr) return TESK_INVALID_ARGUMENT;
    qmx::COutputBlock place(block);
    if (!qmx::clearResult(result) || codec == nullptr) return TESK_INVALID_ARGUMENT;
    if (codec->rowCompression == nullptr || codec->rowCompression->rowsLeft() != 0)
        return TESK_INVALID_ARGUMENT;
    qmx::CompressRequest request = codec->rowCompression->request(place);
    const tesk_status status =
        qmx::endRows(*codec, result, [&] { return codec->rowCompression->conclude(request); });
    qmx::report(request, status, result);
    return place.keepIfUsable(status, codec);
}

tesk_status tesk_decompress_begin(tesk_codec* codec, const void* stream, size_t streamBytes,
                                  tesk_image* image) {
    if (image != nullptr && !qmx::hasKnownSize(*image)) return TESK_INVALID_ARGUMENT;
    qmx::TKHeader header;
    const tesk_status status = qmx::checkDecompression(codec, stream, streamBytes, header);
    if (image != nullptr && (status == TESK_OK || status == TESK_UNSUPPORTED_FORMAT))
        tesk_probe(stream, streamBytes, image);
    if (status != TESK_OK) return status;
    return qmx::beginRows(*codec, header, [&](qmx::CCallMemory& memory) {
        codec->rowDecompression = qmx::makeObject<qmx::CRowDecompression>(
            &memory, header, stream, streamBytes, memory, codec->stopRequested);
        const tesk_status opened = codec->rowDecompression->open();
        return opened == TESK_CUT ? TESK_OK : opened;
    });
}

tesk_status tesk_decompress_rows(tesk_codec* codec, void* rows, size_t rowStrideBytes,
                                 uint32_t rowCount) {
    if (codec == nullptr || codec->rowDecompression == nullptr) return TESK_INVALID_ARGUMENT;
    qmx::CRowDecompression& image = *codec->rowDecompression;
    const std::size_t stride = qmx::strideOrDefault(rowStrideBytes, image.header());
    if (!qmx::isValid(rowCount, image.rowsLeft(), rows, stride, image.header()))
        return TESK_INVALID_ARGUMENT;
    return qmx::goOn(
        *codec, [&] { return image.store(static_cast<unsigned char*>(rows), stride, rowCount); });
}

tesk_status tesk_decompress_end(tesk_codec* codec, tesk_result* result) {
    if (!qmx::clearResult(result) || codec == nullptr) return TESK_INVALID_ARGUMENT;
    if (codec->rowDecompression == nullptr || codec->rowDecompression->rowsLeft() != 0)
        return TESK_INVALID_ARGUMENT;
    return qmx::endRows(*codec, result, [&] { return codec->rowDecompression->status(); });
}

void tesk_abandon(tesk_codec* codec) {
    if (codec == nullptr) return;
    codec->rowCompression.reset();
    codec->rowDecompression.reset();
    codec->rowMemory.reset();
}

#include "cli/MemoryModes.h"

#include <algorithm>
#include <memory>

#include "api/CTeskCompressor.h"
#include "api/CTeskDecompressor.h"
#include "api/CompressorLoss.h"
#include "bitstream/Status.h"
#include "cli/FatalErrors.h"
#include "cli/FileModes.h"
#include "cli/RawSurplus.h"
#include "container/Budget.h"
#include "container/FileIo.h"

namespace qmx {
namespace {

using ByteArray = std::unique_ptr<unsigned char[]>;

/// Returns: the first sizeBytes bytes of a raw file; those that it lacks are 0.
ByteArray readPixels(FilePtr raw, std::size_t sizeBytes) {
    auto pixels = std::make_unique_for_overwrite<unsigned char[]>(sizeBytes);
    const std::size_t got = readUpTo(raw.get(), pixels.get(), sizeBytes);
    std::fill(pixels.get() + got, pixels.get() + sizeBytes, static_cast<unsigned char>(0));
    return pixels;
}

/// Writes and releases the block, if there is one. Returns: what the stream loses that no rate asked for.
LossReport writeBlock(CTeskCompressor& compressor, std::FILE* stream, double rate) {
    const auto release = [&](unsigned char* block) { compressor.freeBlock(block); };
    const std::unique_ptr<unsigned char, decltype(release)> block(compressor.getBlock(), release);
    if (block == nullptr) return {};
    writeAll(stream, FileRole::output, block.get(), compressor.getStreamSize());
    return findLoss(compressor, rate != 0.0);
}

/// The header as the decompressor will see it, for messages about an image that is too large for it.
void rememberHeaderOf(const FileBytes& stream) {
    TKHeader header{};
    if (stream.sizeBytes > sizeof header) std::memcpy(&header, stream.bytes.get(), sizeof header);
    rememberGeometry(header);
}

}  // namespace

int compressInMemory(const CommandLine& line) {
    const RawGeometry& g = line.geometry;
    const TKHeader header = makeHeader(g.bytesPerPixel, g.bitsPerPixel, g.width, g.height);
    rememberGeometry(header);
    JobFiles files;
    if (!openJobFiles(line, files)) return 1;
    if (!header.isSupported()) return refuseFormat();

    reportSurplus(files.input.get(), line.inputName, header);
    ByteArray pixels = readPixels(std::move(files.input), header.rawBytes());
    const std::uint64_t budgetBytes =
        truncateToUnsigned(static_cast<double>(header.rawBytes()) * line.rate);
    CTeskCompressor compressor(header.xSize, header.ySize, header.bitsPerPixel,
                               header.bytesPerPixel, pixels.get(), budgetBytes, false);
    pixels.reset();
    LossReport loss;
    if (isUsable(compressor.compress()))
        loss = writeBlock(compressor, files.output.get(), line.rate);
    closeOutput(std::move(files.output));
    reportLoss(loss, line);
    return 0;
}

int decompressInMemory(const CommandLine& line) {
    JobFiles files;
    if (!openJobFiles(line, files)) return 1;
    const FileBytes stream = readRest(files.input.get());
    rememberHeaderOf(stream);
    CTeskDecompressor decompressor(stream.bytes.get(), stream.sizeBytes);
    const TKHeader header =
        makeHeader(decompressor.getBytesPerPixel(), decompressor.getBitsPerPixel(),
                   decompressor.getXSize(), decompressor.getYSize());
    if (!header.isSupported()) return refuseFormat();

    const auto pixels = std::make_unique_for_overwrite<unsigned char[]>(header.rawBytes());
    const int result = decompressor.decompress(pixels.get(), header.rawBytes());
    if (isUsable(result)) {
        writeAll(files.output.get(), FileRole::output, pixels.get(), header.rawBytes());
    } else {
        reportDecompressionError(result, line);
    }
    closeOutput(std::move(files.output));
    return 0;
}

}  // namespace qmx

#include "bitstream/CBitFileWriter.h"

#include <algorithm>

#include "bitstream/Throwing.h"

namespace qmx {

CBitFileWriter::CBitFileWriter(std::FILE* outputFile, bool closesFile)
    : CBitFileWriter(std::make_unique<unsigned char[]>(kFileBufferBytes), outputFile, closesFile) {}

CBitFileWriter::CBitFileWriter(std::unique_ptr<unsigned char[]> space, std::FILE* outputFile,
                               bool closesFile)
    : CBitWriter(space.get(), kFileBufferBytes),
      storage(std::move(space)),
      file(outputFile),
      closeFile(closesFile) {}

CBitFileWriter::~CBitFileWriter() {
    if (file == nullptr) return;
    writeRest();
    if (closeFile && std::fclose(file) != 0) throwWriteFailed();
}

void CBitFileWriter::writeToFile(std::size_t sizeBytes) {
    if (file == nullptr || std::fwrite(buffer, 1, sizeBytes, file) != sizeBytes) throwWriteFailed();
}

void CBitFileWriter::flushBuffer() {
    const std::int64_t wholeWords = std::min(cursor, bufferWords);
    const auto sizeBytes = static_cast<std::size_t>(wholeWords * kWordBytes);
    writeToFile(sizeBytes);
    bitsFlushed += 8 * sizeBytes;
    cursor = 0;
}

void CBitFileWriter::writeRest() {
    flush();
    // A write that failed earlier leaves the surplus bit counted beside a full buffer.
    const std::uint64_t pendingBytes = (CBitWriter::getTotal() + 7) / 8;
    writeToFile(static_cast<std::size_t>(std::min<std::uint64_t>(pendingBytes, kFileBufferBytes)));
}

}  // namespace qmx

// Places the stream in memory of its own: the output file is the block, mapped into memory, and the
// encoder writes straight into it.

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <new>
#include <sys/mman.h>
#include <tesk/CTeskCompressor.h>
#include <tesk/Status.h>
#include <unistd.h>

#include "support.h"

namespace {

class CMappedFileCompressor final : public qmx::CTeskCompressor {
public:
    CMappedFileCompressor(const tesk_image& image, const void* pixels, int outputFile)
        : CTeskCompressor(static_cast<int>(image.width), static_cast<int>(image.height),
                          static_cast<int>(image.bits_per_pixel),
                          static_cast<int>(image.bytes_per_pixel), pixels, 0, true),
          file(outputFile) {}
    // The base class releases the block too late for the freeBlock of this one.
    ~CMappedFileCompressor() override { releaseBlock(); }

    void* allocBlock(unsigned long sizeBytes) override {
        // Without space on the disk, writing to the mapping would end the process.
        if (posix_fallocate(file, 0, static_cast<off_t>(sizeBytes)) != 0) return nullptr;
        void* block = mmap(nullptr, sizeBytes, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        mappedBytes = sizeBytes;
        return block != MAP_FAILED ? block : nullptr;
    }

    void freeBlock(void* block) override { munmap(block, mappedBytes); }

private:
    int file;
    unsigned long mappedBytes = 0;
};

// Returns: why there is no stream in the file, or null.
const char* compressInto(int file, const tesk_image& image, const void* pixels,
                         unsigned long& streamBytes) {
    try {
        CMappedFileCompressor compressor(image, pixels, file);
        const int result = compressor.compress();
        if (result == qmx::kInvalidSection) return "image format not supported";
        if (!qmx::isUsable(result)) return "no stream came out";
        streamBytes = compressor.getStreamSize();
        return nullptr;
    } catch (const std::bad_alloc&) {
        return "no room in memory or on the disk";
    }
}

int compress(const tesk_image& image, const void* pixels, const char* streamName) {
    const int file = open(streamName, O_RDWR | O_CREAT | O_TRUNC, 0666);
    if (file < 0) return fail(streamName, std::strerror(errno));
    unsigned long streamBytes = 0;
    const char* reason = compressInto(file, image, pixels, streamBytes);
    // The block was as long as a stream might become.
    const bool trimmed = ftruncate(file, static_cast<off_t>(streamBytes)) == 0;
    const bool closed = close(file) == 0;
    if (reason != nullptr) return fail(streamName, reason);
    if (!trimmed || !closed) return fail(streamName, std::strerror(errno));
    std::printf("%zu bytes become %lu in a mapped file\n", raw_bytes(&image), streamBytes);
    return SUCCESS;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 7) {
        std::fputs("usage: own_block " IMAGE_USAGE " STREAM\n", stderr);
        return WRONG_USAGE;
    }
    tesk_image image;
    content pixels;
    if (!read_image(arguments + 1, &image, &pixels)) return FAILURE;
    const std::unique_ptr<unsigned char, decltype(&std::free)> owner(pixels.bytes, std::free);
    return compress(image, pixels.bytes, arguments[6]);
}

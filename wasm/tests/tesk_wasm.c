/* The C interface on wasm32, as a program for node: `c WIDTH HEIGHT BYTES BITS` compresses standard input to
 * standard output, `d` decompresses it, `sizes` asks for images that 32 bits cannot address. */

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tesk/tesk.h>

enum { kMostBytes = 4 << 20, kHeaderBytes = 16 };

static tesk_codec* codec;

static int fail(const char* what, int status) {
    fprintf(stderr, "tesk_wasm: %s: %s\n", what, tesk_status_message(status));
    return 1;
}

static int put(const void* bytes, size_t count) {
    return fwrite(bytes, 1, count, stdout) == count && fflush(stdout) == 0 ? 0 : 1;
}

static int compress(const tesk_image* image, const void* pixels) {
    void* block;
    tesk_result result = TESK_RESULT_INIT;
    const tesk_status status = tesk_compress_to_block(codec, image, pixels, 0, 0, &block, &result);
    if (status != TESK_OK) return fail("compress", status);
    const int failed = put(block, result.stream_bytes);
    tesk_release_block(codec, block);
    return failed;
}

static int decompress(const void* stream, size_t bytes, void* pixels) {
    tesk_image image = TESK_IMAGE_INIT;
    tesk_status status = tesk_probe(stream, bytes, &image);
    if (status == TESK_OK)
        status = tesk_decompress(codec, stream, bytes, pixels, kMostBytes, 0, NULL);
    if (status != TESK_OK && status != TESK_CUT) return fail("decompress", status);
    return put(pixels, (size_t)image.width * image.height * image.bytes_per_pixel);
}

/* An image whose bytes come out as `wrapped` in 32 bits. Compression and decompression, with rows that
 * stand side by side and with a stride, say that they are too many, and touch nothing. */
static int refuses(uint32_t width, uint32_t height, uint32_t bytes, uint32_t wrapped) {
    unsigned char stream[kHeaderBytes + 64] = {'T', 'K', '3', '0'};
    unsigned char pixels[1] = {0};
    const tesk_image image = {sizeof image, width, height, bytes, 8};
    void* block;
    if (width * height * bytes != wrapped) return fail("a wrong size in this file", 0);
    stream[4] = (unsigned char)bytes;
    stream[5] = 8;
    stream[6] = (unsigned char)width;
    stream[7] = (unsigned char)(width >> 8);
    stream[8] = (unsigned char)height;
    stream[9] = (unsigned char)(height >> 8);
    for (size_t stride = 0; stride <= (size_t)width * bytes; stride += (size_t)width * bytes) {
        int status = tesk_compress_to_block(codec, &image, pixels, stride, 0, &block, NULL);
        if (status != TESK_OUT_OF_MEMORY) return fail("compress, too large", status);
        status = tesk_decompress(codec, stream, sizeof stream, pixels, sizeof pixels, stride, NULL);
        if (status != TESK_OUT_OF_MEMORY) return fail("decompress, too large", status);
    }
    return 0;
}

/* Row by row such an image needs no memory of its size: what has no addresses is too many rows in a call. */
static int takesRows(void) {
    static unsigned char row[3 * 65535];
    const tesk_image image = {sizeof image, 65535, 65535, 3, 8};
    int status = tesk_compress_begin(codec, &image, 0);
    if (status != TESK_OK) return fail("begin", status);
    status = tesk_compress_rows(codec, row, 0, 65535);
    if (status != TESK_INVALID_ARGUMENT) return fail("65535 rows at once", status);
    status = tesk_compress_rows(codec, row, sizeof row, 1);
    tesk_abandon(codec);
    return status == TESK_OK ? 0 : fail("a row", status);
}

static int checkSizes(void) {
    return takesRows() || refuses(65535, 65535, 1, 4294836225) ||
           refuses(65535, 65535, 3, 4294574083) || refuses(46341, 46341, 2, 9266) ||
           refuses(61426, 23307, 3, 50) || refuses(62571, 45761, 3, 1);
}

int main(int argc, char** argv) {
    static unsigned char input[kMostBytes], output[kMostBytes];
    const char* mode = argc > 1 ? argv[1] : "";
    if (tesk_create(NULL, &codec) != TESK_OK) return fail("create", TESK_OUT_OF_MEMORY);
    if (strcmp(mode, "sizes") == 0) return checkSizes();
    const size_t bytes = fread(input, 1, sizeof input, stdin);
    if (strcmp(mode, "d") == 0) return decompress(input, bytes, output);
    if (strcmp(mode, "c") != 0 || argc != 6) return fail("arguments", TESK_INVALID_ARGUMENT);
    const tesk_image image = {sizeof image, (uint32_t)atoi(argv[2]), (uint32_t)atoi(argv[3]),
                              (uint32_t)atoi(argv[4]), (uint32_t)atoi(argv[5])};
    return compress(&image, input);
}

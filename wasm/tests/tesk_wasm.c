/* The C interface on wasm32, as a program for node: it asks for images that 32 bits cannot address. */

#include <stdio.h>
#include <tesk/tesk.h>

static tesk_codec* codec;

static int fail(const char* what, tesk_status status) {
    fprintf(stderr, "tesk_wasm: %s: %s\n", what, tesk_status_message((int)status));
    return 1;
}

/* An image whose bytes come out as `wrapped` in 32 bits. Compression and decompression, with rows that
 * stand side by side and with a stride, say that they are too many, and touch nothing. */
static int refuses(uint32_t width, uint32_t height, uint32_t bytes, uint32_t wrapped) {
    unsigned char stream[16 + 64] = {'T', 'K', '3', '0'};
    unsigned char pixels[1] = {0};
    const tesk_image image = {sizeof image, width, height, bytes, 8};
    void* block;
    if (width * height * bytes != wrapped) return fail("a wrong size in this file", TESK_OK);
    stream[4] = (unsigned char)bytes;
    stream[5] = 8;
    stream[6] = (unsigned char)width;
    stream[7] = (unsigned char)(width >> 8);
    stream[8] = (unsigned char)height;
    stream[9] = (unsigned char)(height >> 8);
    for (size_t stride = 0; stride <= (size_t)width * bytes; stride += (size_t)width * bytes) {
        tesk_status status = tesk_compress_to_block(codec, &image, pixels, stride, 0, &block, NULL);
        if (status != TESK_OUT_OF_MEMORY) return fail("compress, too large", status);
        status = tesk_decompress(codec, stream, sizeof stream, pixels, sizeof pixels, stride, NULL);
        if (status != TESK_OUT_OF_MEMORY) return fail("decompress, too large", status);
    }
    return 0;
}

/* Row by row such an image needs no memory of its size: what has no addresses is too many rows in a call. */
static int takes_rows(void) {
    static unsigned char row[3 * 65535];
    const tesk_image image = {sizeof image, 65535, 65535, 3, 8};
    tesk_status status = tesk_compress_begin(codec, &image, 0);
    if (status != TESK_OK) return fail("begin", status);
    status = tesk_compress_rows(codec, row, 0, 65535);
    if (status != TESK_INVALID_ARGUMENT) return fail("65535 rows at once", status);
    status = tesk_compress_rows(codec, row, sizeof row, 1);
    tesk_abandon(codec);
    return status == TESK_OK ? 0 : fail("a row", status);
}

int main(void) {
    if (tesk_create(NULL, &codec) != TESK_OK) return fail("create", TESK_OUT_OF_MEMORY);
    return takes_rows() || refuses(65535, 65535, 1, 4294836225) ||
           refuses(65535, 65535, 3, 4294574083) || refuses(46341, 46341, 2, 9266) ||
           refuses(61426, 23307, 3, 50) || refuses(62571, 45761, 3, 1);
}

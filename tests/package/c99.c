/* A program in C99 that calls every function of the C interface on an image of its own. Silent and
 * 0 when all answers are right; else it names the line of the wrong one. */

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tesk/tesk.h>

enum { kWidth = 40, kHeight = 24, kRaw = kWidth * kHeight, kRoom = 4 * kRaw };

#define EXPECT(condition) expect((condition) != 0, #condition, __LINE__)

static void expect(int holds, const char* condition, int line) {
    if (holds) return;
    fprintf(stderr, "c99.c:%d: not so: %s\n", line, condition);
    exit(1);
}

static void* take(void* user, size_t size_bytes) {
    ++*(int*)user;
    return malloc(size_bytes);
}

static void give_back(void* user, void* memory) {
    if (memory != NULL) --*(int*)user;
    free(memory);
}

static void fill(unsigned char* pixels) {
    int i;
    for (i = 0; i < kRaw; ++i)
        pixels[i] = (unsigned char)(i % kWidth * 3 + i / kWidth * 5 + i % 7);
}

static tesk_image small_image(void) {
    tesk_image image = TESK_IMAGE_INIT;
    image.width = kWidth;
    image.height = kHeight;
    image.bytes_per_pixel = 1;
    image.bits_per_pixel = 8;
    return image;
}

static void check_words(void) {
    char compiled[64];
    sprintf(compiled, "%d.%d.%d", TESK_VERSION_MAJOR, TESK_VERSION_MINOR, TESK_VERSION_PATCH);
    EXPECT(strcmp(tesk_version(), compiled) == 0);
    EXPECT(strlen(tesk_status_message(TESK_INVALID_ARGUMENT)) > 0);
    EXPECT(strcmp(tesk_status_message(TESK_OK), tesk_status_message(TESK_CUT)) != 0);
    EXPECT(strlen(tesk_status_message(-1)) > 0);
    EXPECT(strcmp(tesk_loss_message(TESK_LOSS_NONE), tesk_loss_message(-1)) != 0);
}

static void check_sizes(const unsigned char* pixels) {
    tesk_image image = small_image();
    uint32_t used = 0;
    EXPECT(tesk_raw_bytes(&image) == kRaw);
    EXPECT(tesk_compress_bound(&image) > kRaw && tesk_compress_bound(&image) <= kRoom);
    EXPECT(tesk_used_bits(&image, pixels, 0, &used) == TESK_OK);
    EXPECT(used > 127 && used < 256);
    image.width = 65536;
    EXPECT(tesk_raw_bytes(&image) == 0 && tesk_compress_bound(&image) == 0);
}

static void check_round_trip(tesk_codec* codec, const unsigned char* pixels) {
    static unsigned char stream[kRoom];
    static unsigned char restored[kRaw];
    const tesk_image image = small_image();
    tesk_image probed = TESK_IMAGE_INIT;
    tesk_result result = TESK_RESULT_INIT;
    size_t length = 0;

    EXPECT(tesk_compress(codec, &image, pixels, 0, 0, stream, 16, &result) ==
           TESK_BUFFER_TOO_SMALL);
    EXPECT(result.stream_bytes > 16 && result.stream_bytes <= kRoom);
    EXPECT(tesk_compress(codec, &image, pixels, 0, 0, stream, sizeof stream, &result) == TESK_OK);
    EXPECT(result.peak_memory_bytes > 0);
    EXPECT(tesk_measure(stream, sizeof stream, &length) == TESK_OK);
    EXPECT(length == result.stream_bytes);
    EXPECT(tesk_measure(stream, length / 2, &length) == TESK_CUT);
    EXPECT(tesk_probe(stream, result.stream_bytes, &probed) == TESK_OK);
    EXPECT(probed.width == kWidth && probed.height == kHeight);
    EXPECT(probed.bytes_per_pixel == 1 && probed.bits_per_pixel == 8);
    EXPECT(tesk_decompress(codec, stream, result.stream_bytes, restored, kRaw, 0, NULL) == TESK_OK);
    EXPECT(memcmp(pixels, restored, kRaw) == 0);
}

static void check_reduced(tesk_codec* codec, const unsigned char* pixels) {
    static unsigned char stream[kRoom];
    static unsigned char picture[kRaw / 16];
    tesk_image image = small_image();
    tesk_result result = TESK_RESULT_INIT;
    EXPECT(tesk_compress(codec, &image, pixels, 0, 0, stream, sizeof stream, &result) == TESK_OK);
    EXPECT(tesk_reduced_image(&image, 4, &image) == TESK_UNSUPPORTED_FORMAT);
    EXPECT(tesk_reduced_image(&image, 2, &image) == TESK_OK);
    EXPECT(image.width == kWidth / 4 && image.height == kHeight / 4);
    EXPECT(tesk_decompress_reduced(codec, stream, result.stream_bytes, 2, picture, sizeof picture,
                                   0, NULL) == TESK_OK);
    EXPECT(picture[0] < picture[sizeof picture - 1]);
}

static void check_block(tesk_codec* codec, const unsigned char* pixels) {
    const tesk_image image = small_image();
    tesk_result result = TESK_RESULT_INIT;
    void* block = NULL;
    EXPECT(tesk_compress_to_block(codec, &image, pixels, 0, 100, &block, &result) == TESK_CUT);
    EXPECT(block != NULL && result.stream_bytes == 100);
    EXPECT(result.loss == TESK_LOSS_BUDGET);
    tesk_release_block(codec, block);

    tesk_stop(codec);
    EXPECT(tesk_compress_to_block(codec, &image, pixels, 0, 0, &block, NULL) == TESK_STOPPED);
    EXPECT(block == NULL);
    tesk_release_block(codec, block);
    tesk_clear_stop(codec);
    EXPECT(tesk_compress_to_block(codec, &image, pixels, 0, 0, &block, NULL) == TESK_OK);
    tesk_release_block(codec, block);
}

static void check_rows(tesk_codec* codec, const unsigned char* pixels) {
    tesk_image image = small_image();
    tesk_image back = TESK_IMAGE_INIT;
    tesk_result result = TESK_RESULT_INIT;
    unsigned char row[kWidth];
    void* block = NULL;
    uint32_t r;
    EXPECT(tesk_compress_begin(codec, &image, 0) == TESK_OK);
    for (r = 0; r < image.height; ++r)
        EXPECT(tesk_compress_rows(codec, pixels + r * kWidth, 0, 1) == TESK_OK);
    EXPECT(tesk_compress_end(codec, &block, &result) == TESK_OK);

    EXPECT(tesk_decompress_begin(codec, block, result.stream_bytes, &back) == TESK_OK);
    EXPECT(back.width == image.width && back.height == image.height);
    for (r = 0; r < back.height; ++r) {
        EXPECT(tesk_decompress_rows(codec, row, 0, 1) == TESK_OK);
        EXPECT(memcmp(row, pixels + r * kWidth, kWidth) == 0);
    }
    EXPECT(tesk_decompress_end(codec, NULL) == TESK_OK);

    EXPECT(tesk_decompress_begin(codec, block, result.stream_bytes, NULL) == TESK_OK);
    tesk_abandon(codec);
    tesk_release_block(codec, block);
}

int main(void) {
    static unsigned char pixels[kRaw];
    int outstanding = 0;
    tesk_options options = TESK_OPTIONS_INIT;
    tesk_codec* codec = NULL;
    options.allocate = take;
    options.release = give_back;
    options.user = &outstanding;

    fill(pixels);
    check_words();
    check_sizes(pixels);
    EXPECT(tesk_create(&options, &codec) == TESK_OK);
    check_round_trip(codec, pixels);
    check_reduced(codec, pixels);
    check_block(codec, pixels);
    check_rows(codec, pixels);
    tesk_trim(codec);
    tesk_destroy(codec);
    EXPECT(outstanding == 0);
    tesk_destroy(NULL);
    return 0;
}

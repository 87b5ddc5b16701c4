/* Shows that a stream is embedded: decodes a growing prefix of it and prints how far each result is
 * from that of the whole stream. */

#include <math.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "support.h"

static const unsigned kPercents[] = {1, 2, 5, 10, 20, 30, 40, 50, 60, 70, 80, 90, 100};

typedef struct decoding {
    tesk_codec* codec;
    const content* stream;
    tesk_image image;
    unsigned char* complete;
    unsigned char* approximation;
} decoding;

static bool is_usable(tesk_status status) {
    return status == TESK_OK || status == TESK_CUT;
}

static tesk_status decode(const decoding* d, size_t prefix_bytes, unsigned char* pixels) {
    return tesk_decompress(d->codec, d->stream->bytes, prefix_bytes, pixels, raw_bytes(&d->image),
                           0, NULL);
}

static double sample(const decoding* d, const unsigned char* pixels, size_t i) {
    if (d->image.bytes_per_pixel != 2) return pixels[i];
    uint16_t value;
    memcpy(&value, pixels + 2 * i, sizeof value);
    return value;
}

static double root_mean_squared_error(const decoding* d) {
    const size_t samples = raw_bytes(&d->image) / (d->image.bytes_per_pixel == 2 ? 2 : 1);
    double sum = 0;
    for (size_t i = 0; i < samples; ++i) {
        const double difference = sample(d, d->complete, i) - sample(d, d->approximation, i);
        sum += difference * difference;
    }
    return samples != 0 ? sqrt(sum / (double)samples) : 0;
}

static void print_prefix(const decoding* d, unsigned percent) {
    const size_t bytes = d->stream->size / 100 * percent + d->stream->size % 100 * percent / 100;
    const tesk_status status = decode(d, bytes, d->approximation);
    printf("%3u %%  %10zu bytes  ", percent, bytes);
    if (is_usable(status))
        printf("RMSE %11.6f  %s\n", root_mean_squared_error(d), tesk_status_message(status));
    else
        printf("no image          %s\n", tesk_status_message(status));
}

static int print_prefixes(const decoding* d, const char* name) {
    if (d->codec == NULL || d->complete == NULL || d->approximation == NULL)
        return fail(name, tesk_status_message(TESK_OUT_OF_MEMORY));
    const tesk_status status = decode(d, d->stream->size, d->complete);
    if (!is_usable(status)) return fail(name, tesk_status_message(status));
    for (size_t i = 0; i < sizeof kPercents / sizeof kPercents[0]; ++i)
        print_prefix(d, kPercents[i]);
    return SUCCESS;
}

static int explore(const content* stream, const char* name) {
    decoding d = {NULL, stream, TESK_IMAGE_INIT, NULL, NULL};
    const tesk_status status = tesk_probe(stream->bytes, stream->size, &d.image);
    if (status != TESK_OK) return fail(name, tesk_status_message(status));
    tesk_create(NULL, &d.codec);
    d.complete = malloc(raw_bytes(&d.image) + 1);
    d.approximation = malloc(raw_bytes(&d.image) + 1);
    const int exit_status = print_prefixes(&d, name);
    free(d.approximation);
    free(d.complete);
    tesk_destroy(d.codec);
    return exit_status;
}

int main(int count, char** arguments) {
    if (count != 2) {
        fputs("usage: growing_prefix STREAM\n", stderr);
        return WRONG_USAGE;
    }
    content stream;
    if (!read_file(arguments[1], &stream)) return FAILURE;
    const int exit_status = explore(&stream, arguments[1]);
    free(stream.bytes);
    return exit_status;
}

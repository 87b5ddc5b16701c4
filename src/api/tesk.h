#ifndef TESK_H
#define TESK_H

/*
 * The C interface of tesk, a lossless, embedded codec for raw images.
 *
 * One image goes in or comes out per call, or row by row. The library prints nothing, keeps no global state and
 * lets no exception out. Use a codec in one thread at a time; there may be any number of codecs. Only tesk_stop
 * may be called from any thread at any time.
 *
 * Sizes and strides are in bytes. A stride is the distance from one row to the next; 0 stands for rows without
 * gaps. 16-bit samples are in the byte order of the machine, at any address.
 *
 * Each struct begins with struct_bytes, its size. The TESK_..._INIT values set it. Later versions may add fields
 * at the end of a struct:
 *  - A size below that of version 1.0 or above 4096 is TESK_INVALID_ARGUMENT.
 *  - In a struct that a call reads, fields that this library does not know must be 0, else the call returns
 *    TESK_INVALID_ARGUMENT.
 *  - In a struct that a call fills in, the call leaves such fields as they are.
 *
 * On wasm32, where sizes have 32 bits, a call that takes or gives a whole image of more than PTRDIFF_MAX bytes
 * returns TESK_OUT_OF_MEMORY. It then reads and writes nothing.
 *
 * Words: the declared bits of an image are its bits_per_pixel. A plain stream is what the plain tool `tesk`
 * writes; it does not restore every image. To verify a stream is to decode it and to compare it with the image
 * before the call returns.
 *
 * The stream: docs/format.md in the sources of tesk, with the coefficient widths of the memory profile. Unlike the
 * C++ objects, these calls check the magic, and take a stream of 16 bytes.
 */

#include <stddef.h>
#include <stdint.h>

#include "Version.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Names as is usual in C. NOLINTBEGIN(readability-identifier-naming) */
#pragma GCC visibility push(default)

/* What a call returns. The numbers do not change. */
typedef enum tesk_status {
    TESK_OK = 0,                 /* complete */
    TESK_CUT = 1,                /* usable: the stream was cut at the budget, or ended early */
    TESK_STOPPED = 2,            /* tesk_stop was called: there is no result */
    TESK_INVALID_STREAM = 3,     /* no stream, or a section names what the image does not have */
    TESK_UNSUPPORTED_FORMAT = 4, /* no stream can hold such an image, or it has fewer levels */
    TESK_LIMIT_EXCEEDED = 5,     /* more than max_pixels or max_memory_bytes */
    TESK_OUT_OF_MEMORY = 6,      /* the allocator returned null */
    TESK_BUFFER_TOO_SMALL = 7,   /* the caller's buffer is too small for the result */
    /* A null pointer, an unknown struct, a stride below a row, a budget of 1 to 15 bytes, row calls in the wrong
     * order or with too many rows. */
    TESK_INVALID_ARGUMENT = 8,
    TESK_NOT_RESTORABLE = 9 /* no stream restores this image; TESK_PLAIN gives one all the same */
} tesk_status;

/* Returns: one line of English for a status, without a line end; for other numbers, too. Never null. */
const char* tesk_status_message(int status);

/* Returns: the version of the library that runs, "major.minor.patch". The version that the program was compiled
 * with is TESK_VERSION_MAJOR, TESK_VERSION_MINOR and TESK_VERSION_PATCH. */
const char* tesk_version(void);

/* The size and type of an image: its geometry. */
typedef struct tesk_image {
    size_t struct_bytes;
    uint32_t width;           /* pixels, 0 to 65535 */
    uint32_t height;          /* pixels, 0 to 65535 */
    uint32_t bytes_per_pixel; /* 1: 8-bit gray, 2: 16-bit gray, 3: interleaved 8-bit R, G, B */
    uint32_t bits_per_pixel;  /* declared bits of one sample: 8 for R, G, B, not 24 */
} tesk_image;

#define TESK_IMAGE_INIT \
    { sizeof(tesk_image), 0, 0, 0, 0 }

/*
 * Reads the geometry of a stream from its first 16 bytes. Allocates nothing, needs no codec.
 *
 * Requires: image->struct_bytes is set.
 * Returns: TESK_OK: image is filled;
 *          TESK_UNSUPPORTED_FORMAT: image is filled, but no image has so many bytes per pixel;
 *          TESK_INVALID_STREAM: too short, or no stream;
 *          TESK_INVALID_ARGUMENT.
 */
tesk_status tesk_probe(const void* stream, size_t stream_bytes, tesk_image* image);

/* Returns: the most bytes that a stream of such an image can have, with any samples, flags and budget. A buffer
 * of so many bytes is never too small for tesk_compress. 0 if no stream can hold the image, if size_t cannot hold
 * the number, for null and for an unknown struct. Since 1.1. */
size_t tesk_compress_bound(const tesk_image* image);

/* Returns: the bytes of the pixels of an image, rows without gaps. 0 if it has no pixels, if no stream can hold
 * them, if size_t cannot hold the number, for null and for an unknown struct. bits_per_pixel is not read, as
 * streams may declare any. Since 1.1. */
size_t tesk_raw_bytes(const tesk_image* image);

/*
 * Finds the bits that the samples of an image use: *used is the bitwise OR of all samples, those of R, G and B
 * together. bits_per_pixel needs to be the position of its highest 1 bit, at least 1: 10 if *used is 0x3ff. If
 * its low bits are 0, the samples are shifted left; shift them right before you compress them. Allocates nothing,
 * needs no codec. Since 1.1.
 *
 *  - image: its bits_per_pixel is not read.
 *  - pixels, row_stride_bytes: as for tesk_compress.
 *
 * Returns: TESK_OK. Otherwise *used is 0:
 *          TESK_INVALID_ARGUMENT;
 *          TESK_UNSUPPORTED_FORMAT: a side above 65535, or other bytes per pixel than 1, 2 and 3.
 */
tesk_status tesk_used_bits(const tesk_image* image, const void* pixels, size_t row_stride_bytes,
                           uint32_t* used);

/*
 * Finds where a stream ends, from the headers of its sections. Decodes and allocates nothing, needs no
 * codec. Since 1.1.
 *
 *  - stream: stream_bytes bytes that begin with a stream. Anything may follow it.
 *
 * Returns: the status that tesk_decompress returns for the same bytes:
 *          TESK_OK: the complete stream has *length bytes. Up to two bytes of padding after its last bit
 *          belong to it, if they are there;
 *          TESK_CUT: it ends early, *length is stream_bytes;
 *          TESK_INVALID_STREAM, TESK_UNSUPPORTED_FORMAT, TESK_INVALID_ARGUMENT: *length is 0.
 *          The true end of a plain stream with TESK_LOSS_LONG_SECTION cannot be found: *length is where decoders
 *          stop.
 */
tesk_status tesk_measure(const void* stream, size_t stream_bytes, size_t* length);

/* The flags of tesk_options. */
enum {
    /* Makes plain streams. Some do not restore their image, and some cannot be decoded once they are cut.
     * Without this flag, complete streams restore every image whose sides are both 2 or more, and cut ones decode
     * to an approximation. If the plain stream does so, it is the stream either way. */
    TESK_PLAIN = 1,
    /* Compression without a budget does not verify its stream. Compression with a budget never does. */
    TESK_UNVERIFIED = 2
};

/* What a codec may use, and where its memory comes from. 0 and null are the default, except for
 * most_kept_bytes. */
typedef struct tesk_options {
    size_t struct_bytes;
    /* Largest image, in pixels. 0: no limit. */
    size_t max_pixels;
    /* Most memory that one call may hold, or an image row by row from begin to end, output blocks included.
     * 0: no limit. If a call without a limit reports peak_memory_bytes, the same call succeeds with that number as
     * its limit. If an image surely needs more, the call allocates nothing; otherwise it may end while it works.
     * It does not limit the size of images: decompression takes far less memory than the pixels. For that there is
     * max_pixels. */
    size_t max_memory_bytes;
    /* All memory of the codec and its output blocks come from here. Only C++ exceptions come from the C++
     * runtime: one at a time, of up to 136 bytes. allocate returns memory aligned as by malloc, or null.
     * Null: malloc and free. Set both or none. user is their first argument. */
    void* (*allocate)(void* user, size_t size_bytes);
    void (*release)(void* user, void* memory);
    void* user;
    /* TESK_PLAIN, TESK_UNVERIFIED, both or 0. */
    uint32_t flags;
    /* Most memory that the codec keeps for later calls when a call ends. Later calls on images of the same
     * geometry then ask the allocator for nothing but an output block. Memory that two calls in a row did not use
     * is released. Kept memory counts towards max_memory_bytes, and is released before a call would fail for lack
     * of memory. 0: nothing is kept. Since 1.1; without options, and in those of 1.0, it is TESK_KEPT_BYTES. */
    size_t most_kept_bytes;
} tesk_options;

#define TESK_KEPT_BYTES 67108864
#define TESK_OPTIONS_INIT \
    { sizeof(tesk_options), 0, 0, NULL, NULL, NULL, 0, TESK_KEPT_BYTES }

typedef struct tesk_codec tesk_codec;

/*
 * Makes a codec. options may be null; it is copied.
 *
 * Returns: TESK_OK: *codec belongs to the caller, who gives it to tesk_destroy;
 *          TESK_OUT_OF_MEMORY, TESK_INVALID_ARGUMENT: *codec is null.
 */
tesk_status tesk_create(const tesk_options* options, tesk_codec** codec);

/* Destroys a codec. Null does nothing. Output blocks stay valid; the caller releases them with its own release,
 * or with free. Requires: no call is running on it. */
void tesk_destroy(tesk_codec* codec);

/* Releases the memory that the codec keeps. Null does nothing. It may be called between the row calls of an
 * image. Requires: no call is running on it. Since 1.1. */
void tesk_trim(tesk_codec* codec);

/* tesk_stop, from any thread, ends the call that is running on codec, within about one row of pixels or one
 * section of the stream. All later calls return TESK_STOPPED until tesk_clear_stop; calls with invalid arguments
 * still return TESK_INVALID_ARGUMENT. Both may be called between the row calls of an image.
 * Requires: codec is not null and not destroyed; tesk_clear_stop: no call is running on it. */
void tesk_stop(tesk_codec* codec);
void tesk_clear_stop(tesk_codec* codec);

/* Why the stream of a compression will not restore its image. The numbers do not change. */
typedef enum tesk_loss {
    TESK_LOSS_NONE = 0, /* no loss; a stream that was written restores the image exactly */
    /* The stream was cut at the budget. It decodes to an approximation; to the image if only padding is missing. */
    TESK_LOSS_BUDGET = 1,
    TESK_LOSS_SIDE_OF_ONE = 2, /* an image with a side of 1 has no coefficients */
    TESK_LOSS_THIN_IMAGE = 3,  /* decoders filter the longer side of images with a side of 2 or 3 */
    /* Samples exceed bits_per_pixel so far that 16-bit coefficients wrap. */
    TESK_LOSS_WRAPPED = 4,
    TESK_LOSS_ENDLESS_RUN = 5, /* too many coefficients for one run code */
    /* A section is longer than its length field can say. Decoders misread what comes after it: they may refuse
     * the stream, or take a part of it for the whole. */
    TESK_LOSS_LONG_SECTION = 6,
    TESK_LOSS_UNCHECKED = 7, /* not known: there was no memory to find out */
    TESK_LOSS_UNKNOWN = 8    /* it was decoded and is not the image: please report this */
} tesk_loss;

/* Returns: a few words of English for a loss; for other numbers, too. Never null. Look at the status first:
 * TESK_LOSS_NONE means something only if there is a stream. */
const char* tesk_loss_message(int loss);

/* The bits of tesk_result.rescue: what was done to a stream because the plain one would not restore the image. A
 * budget may have cut the stream afterwards. Every decoder reads such streams. Callers need only know whether
 * rescue is 0; TESK_RESCUE_WHOLE_WRAPS alone can be seen. */
enum {
    TESK_RESCUE_THIN_FILTER = 1,   /* an image with a side of 2 or 3 was filtered */
    TESK_RESCUE_DECLARED_BITS = 2, /* the header declares more bits per pixel than the caller */
    TESK_RESCUE_CLOSING_RUNS = 4,  /* needless last runs of sections were left out */
    /* Some coefficients are sent as another number that is the same modulo 65536. */
    TESK_RESCUE_OTHER_REPRESENTATIVE = 8,
    /* Multiples of 65536 were added to samples of images that declare 12 bits or more. A part of the image is
     * white until the stream is complete, and in reduced images. */
    TESK_RESCUE_WHOLE_WRAPS = 16,
    TESK_RESCUE_ENDLESS_RUNS = 32 /* long runs, more than a gigapixel, were spelled out */
};

/* What a call did. Every call sets all fields: to 0 if it has no result. */
typedef struct tesk_result {
    size_t struct_bytes;
    /* Bytes of the stream that was written, its 16 header bytes included. After TESK_BUFFER_TOO_SMALL the bytes
     * that are needed. 0 after decompression. */
    size_t stream_bytes;
    /* Most memory that the call held at one time, output block included; of an image row by row, since its
     * begin. */
    size_t peak_memory_bytes;
    /* After TESK_OK and TESK_CUT of a compression: why the stream will not restore the image. After
     * TESK_NOT_RESTORABLE: why no stream would. Otherwise TESK_LOSS_NONE. */
    tesk_loss loss;
    /* TESK_RESCUE_... bits of the stream that was written. 0: it is the plain stream. */
    uint32_t rescue;
} tesk_result;

#define TESK_RESULT_INIT \
    { sizeof(tesk_result), 0, 0, TESK_LOSS_NONE, 0 }

/*
 * Compresses an image into a stream: tesk_compress into the caller's buffer, tesk_compress_to_block into a block
 * that the codec's allocator provides, of exactly the size of the stream.
 *
 *  - pixels: height rows of width pixels; row_stride_bytes from one row to the next, 0 for rows without gaps.
 *    pixels may be null if the image has none.
 *  - budget_bytes: the most bytes that the stream may have, header included; at least 16. A longer stream is cut
 *    to exactly that size: TESK_CUT. From 17 bytes on it decodes to an approximation; with TESK_PLAIN decoders
 *    may refuse some cut streams, TESK_LOSS_LONG_SECTION. 16 bytes are the header alone, which decodes to zeros.
 *    0: no budget, the stream is complete.
 *  - out: out_bytes bytes. Null has no room: the call then returns TESK_BUFFER_TOO_SMALL and says in result how
 *    many bytes are needed.
 *  - block: *block belongs to the caller, who gives it to tesk_release_block. It is null unless the status is
 *    TESK_OK or TESK_CUT.
 *  - result: may be null.
 *
 * Returns: TESK_OK: the stream is complete; TESK_CUT;
 *          TESK_STOPPED, TESK_LIMIT_EXCEEDED, TESK_OUT_OF_MEMORY, TESK_INVALID_ARGUMENT;
 *          TESK_UNSUPPORTED_FORMAT: a side above 65535, other bytes per pixel than 1, 2 and 3, or
 *          bits per pixel that are 0 or more than a sample has;
 *          TESK_NOT_RESTORABLE (without a budget and without TESK_PLAIN): a side is 1 and not all
 *          samples are 0. The contents of out are then undefined. With a budget, such an image gets its
 *          plain stream, and result says what is lost;
 *          TESK_BUFFER_TOO_SMALL (tesk_compress only): nothing was written to out.
 */
tesk_status tesk_compress(tesk_codec* codec, const tesk_image* image, const void* pixels,
                          size_t row_stride_bytes, size_t budget_bytes, void* out, size_t out_bytes,
                          tesk_result* result);
tesk_status tesk_compress_to_block(tesk_codec* codec, const tesk_image* image, const void* pixels,
                                   size_t row_stride_bytes, size_t budget_bytes, void** block,
                                   tesk_result* result);

/* Releases a block. Null does nothing. Requires: block is from tesk_compress_to_block or
 * tesk_compress_end of a codec with the same allocator. */
void tesk_release_block(tesk_codec* codec, void* block);

/*
 * Decompresses a stream, or any prefix of at least 16 bytes, into the caller's buffer. The geometry is that of
 * tesk_probe.
 *
 *  - out: height rows of width pixels, row_stride_bytes from one row to the next, 0 for rows without
 *    gaps. Bytes between rows stay as they are. out_bytes: bytes that may be written at out; the
 *    last row needs no gap after it.
 *  - result: may be null.
 *
 * Returns: TESK_OK: the stream was complete; TESK_CUT: it ended early, out holds an approximation;
 *          TESK_STOPPED: out is undefined;
 *          TESK_INVALID_STREAM, TESK_UNSUPPORTED_FORMAT, TESK_LIMIT_EXCEEDED, TESK_OUT_OF_MEMORY,
 *          TESK_BUFFER_TOO_SMALL, TESK_INVALID_ARGUMENT: nothing was written.
 */
tesk_status tesk_decompress(tesk_codec* codec, const void* stream, size_t stream_bytes, void* out,
                            size_t out_bytes, size_t row_stride_bytes, tesk_result* result);

/*
 * Computes the geometry of a reduced image: both sides are divided by 2^levels and rounded up. 1 level is 1 : 2,
 * 3 are 1 : 8, 0 are the image itself. Since 1.1.
 *
 * The shorter side decides how many levels an image has: below 4 pixels 0, up to 7 pixels 1, up to 15 pixels 2, up
 * to 31 pixels 3, up to 63 pixels 4, from 64 pixels on 5.
 *
 *  - image: its bits_per_pixel may be any number and is copied. image and reduced may be the same.
 *
 * Returns: TESK_OK: reduced is filled. Otherwise it stays as it is:
 *          TESK_UNSUPPORTED_FORMAT: the image has fewer levels, a side above 65535, or other bytes per pixel than
 *          1, 2 and 3;
 *          TESK_INVALID_ARGUMENT.
 */
tesk_status tesk_reduced_image(const tesk_image* image, uint32_t levels, tesk_image* reduced);

/*
 * As tesk_decompress, but to the geometry of tesk_reduced_image. It takes a part of the time and of the memory.
 * levels 0 is tesk_decompress. Since 1.1.
 *
 * It reads the headers of all sections, but only those payloads that it needs; they come early in a stream. The
 * pixels are a little sharper than an average (docs/format.md, 17). They are limited to bits_per_pixel, also if the
 * stream is complete.
 *
 * out, out_bytes, row_stride_bytes and the codec's max_pixels are about the reduced image.
 *
 * Returns: as tesk_decompress for the same bytes. After TESK_CUT the reduced image may be final already.
 *          TESK_UNSUPPORTED_FORMAT also if the image has fewer levels.
 */
tesk_status tesk_decompress_reduced(tesk_codec* codec, const void* stream, size_t stream_bytes,
                                    uint32_t levels, void* out, size_t out_bytes,
                                    size_t row_stride_bytes, tesk_result* result);

/*
 * Row by row, since 1.1. The caller passes rows, or asks for them, in order, any number at a time. Between the calls
 * the codec holds only the compressed stream and a few rows, so images may be larger than memory.
 *
 *  - A codec works on one image at a time: from a begin that returns TESK_OK to the end, every call that
 *    compresses or decompresses something else returns TESK_INVALID_ARGUMENT.
 *  - So do calls in the wrong order and with too many rows. TESK_INVALID_ARGUMENT changes nothing: the image goes on.
 *  - Every other status than TESK_OK ends the image, and the codec is free again. tesk_abandon and tesk_destroy end
 *    it, too.
 *  - Both limits of the options hold for an image from begin to end.
 */

/*
 * Compresses an image row by row: begin, rows until there are height of them, end.
 *
 * The stream has the same bytes as from tesk_compress_to_block. Without a budget, end verifies it with a checksum
 * of the rows, CRC-64, unless TESK_UNVERIFIED is set. That always finds a single wrong sample, and misses other
 * differences with a probability of 2^-64.
 *
 *  - rows: row_count rows of width pixels, row_stride_bytes from one to the next, 0 for rows without gaps. They are
 *    not needed after the call. They may be null if they have no pixels.
 *  - block, result: as for tesk_compress_to_block.
 *
 * Returns: begin and rows TESK_OK; end TESK_OK or TESK_CUT; otherwise as tesk_compress_to_block.
 *          TESK_NOT_RESTORABLE comes from end. Without TESK_PLAIN there is one more such case, with a budget or
 *          without: the image declares 11 bits or fewer, and samples exceed them so far that 16-bit coefficients
 *          wrap (TESK_LOSS_WRAPPED). To code them again takes rows that are gone. tesk_used_bits finds the bits to
 *          declare.
 */
tesk_status tesk_compress_begin(tesk_codec* codec, const tesk_image* image, size_t budget_bytes);
tesk_status tesk_compress_rows(tesk_codec* codec, const void* rows, size_t row_stride_bytes,
                               uint32_t row_count);
tesk_status tesk_compress_end(tesk_codec* codec, void** block, tesk_result* result);

/*
 * Decompresses a stream, or any prefix of at least 16 bytes, row by row: begin, rows until there are height of
 * them, end.
 *
 *  - stream: must not change until the end.
 *  - image: is filled as by tesk_probe; may be null.
 *  - rows: row_count rows of width pixels, row_stride_bytes from one to the next, 0 for rows without gaps.
 *    Bytes between rows stay as they are.
 *
 * Returns: begin and rows TESK_OK; end TESK_OK: the stream was complete; TESK_CUT: it ended early, the rows
 *          are an approximation (tesk_measure knows it beforehand); otherwise as tesk_decompress.
 */
tesk_status tesk_decompress_begin(tesk_codec* codec, const void* stream, size_t stream_bytes,
                                  tesk_image* image);
tesk_status tesk_decompress_rows(tesk_codec* codec, void* rows, size_t row_stride_bytes,
                                 uint32_t row_count);
tesk_status tesk_decompress_end(tesk_codec* codec, tesk_result* result);

/* Ends a compression or decompression row by row, without a result. The codec is free again. Does nothing if there
 * is none, or if codec is null. Since 1.1. */
void tesk_abandon(tesk_codec* codec);

#pragma GCC visibility pop
/* NOLINTEND(readability-identifier-naming) */

#ifdef __cplusplus
}
#endif

#endif

#ifndef TESK_H
#define TESK_H

/*
 * The C interface of tesk, a lossless, embedded codec for raw images.
 *
 * One image goes in or comes out per call, or row by row. The library prints nothing, keeps no global state and
 * lets no exception out. A codec works for one thread at a time; codecs of different threads do not
 * touch each other. Only tesk_stop may be called from any thread at any time.
 *
 * Sizes and strides are in bytes. 16-bit samples are in the byte order of the machine, at any address.
 *
 * Structs begin with their size, which the caller sets to sizeof the struct (the TESK_..._INIT values
 * do), so that later versions can add fields at their end. A size below that of version 1.0 or above
 * 4096 is TESK_INVALID_ARGUMENT. A struct of a later version is longer than this library knows: what
 * it holds beyond must be 0 in structs that a call reads, or the answer is TESK_INVALID_ARGUMENT too,
 * and stays as it is in structs that a call fills in.
 *
 * An image of more bytes than PTRDIFF_MAX, which there can be where sizes have 32 bits (wasm32), is
 * TESK_OUT_OF_MEMORY where a call takes or gives all of it, before anything is read or written.
 *
 * The stream: docs/format.md in the sources of tesk. The memory profile of that page holds here.
 */

#include <stddef.h>
#include <stdint.h>

#include "Version.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Names as is usual in C. NOLINTBEGIN(readability-identifier-naming) */
#pragma GCC visibility push(default)

/* What a call answers. The numbers do not change. */
typedef enum tesk_status {
    TESK_OK = 0,                 /* complete */
    TESK_CUT = 1,                /* usable: the stream ends at the budget, or ended early */
    TESK_STOPPED = 2,            /* tesk_stop was called; there is no result */
    TESK_INVALID_STREAM = 3,     /* this is no stream, or a section names what the image lacks */
    TESK_UNSUPPORTED_FORMAT = 4, /* no stream can hold such an image; bits count one sample */
    TESK_LIMIT_EXCEEDED = 5,     /* beyond what the caller's options allow */
    TESK_OUT_OF_MEMORY = 6,      /* the allocator has no more */
    TESK_BUFFER_TOO_SMALL = 7,   /* the caller's buffer does not hold the result */
    TESK_INVALID_ARGUMENT =
        8,                  /* a null pointer, an unknown struct, a stride below a row, row calls in
                                    the wrong order or with too many rows */
    TESK_NOT_RESTORABLE = 9 /* no stream restores this image; see TESK_PLAIN */
} tesk_status;

/* Returns: a line of English for a status, also for a number that is none, without a line end. Never
 * null. */
const char* tesk_status_message(int status);

/* Returns: the version of the library that runs, "major.minor.patch". TESK_VERSION_MAJOR and its
 * fellows name the version that was compiled against. */
const char* tesk_version(void);

/* The geometry of an image. */
typedef struct tesk_image {
    size_t struct_bytes;
    uint32_t width;           /* pixels, 0 to 65535 */
    uint32_t height;          /* pixels, 0 to 65535 */
    uint32_t bytes_per_pixel; /* 1: 8-bit gray, 2: 16-bit gray, 3: interleaved 8-bit R, G, B */
    uint32_t bits_per_pixel;  /* significant bits of one sample: 8 for R, G, B, not 24 */
} tesk_image;

#define TESK_IMAGE_INIT \
    { sizeof(tesk_image), 0, 0, 0, 0 }

/*
 * Reads the geometry of a stream from its first 16 bytes. Allocates nothing, needs no codec.
 *
 * Returns: TESK_OK, image is filled.
 *          TESK_UNSUPPORTED_FORMAT: image is filled, but no image has so many bytes per pixel.
 *          TESK_INVALID_STREAM: too short or no stream. TESK_INVALID_ARGUMENT.
 */
tesk_status tesk_probe(const void* stream, size_t stream_bytes, tesk_image* image);

/* Returns: the most bytes that a stream of such an image can have, whatever its samples, with any flags and
 * any budget: a buffer of so many bytes is never too small for tesk_compress. 0 where no stream can hold
 * the image, where size_t cannot hold the number, for null and for an unknown struct. Since 1.1. */
size_t tesk_compress_bound(const tesk_image* image);

/* Returns: the bytes of the pixels of an image, rows without gaps. Its bits_per_pixel is not read, as streams
 * may declare any. 0 where it has no pixels or no stream can hold them, where size_t cannot hold the
 * number, for null and for an unknown struct. Since 1.1. */
size_t tesk_raw_bytes(const tesk_image* image);

/*
 * Finds the bits that the samples of an image use: *used is the bitwise or of all of them, those of R, G
 * and B together. Its length is the least bits_per_pixel that holds them, unless it is 0: that is no valid
 * bits_per_pixel. Zeros at its lower end mean samples that stand too far left. Allocates nothing, needs no
 * codec. Since 1.1.
 *
 *  - image: its bits_per_pixel is not read.
 *  - pixels, row_stride_bytes: as for tesk_compress.
 *
 * Returns: TESK_OK; TESK_INVALID_ARGUMENT; TESK_UNSUPPORTED_FORMAT: a side above 65535, or other bytes per
 *          pixel than 1, 2 and 3. Where it is not TESK_OK, *used is 0.
 */
tesk_status tesk_used_bits(const tesk_image* image, const void* pixels, size_t row_stride_bytes,
                           uint32_t* used);

/*
 * Finds where a stream ends, from the headers of its sections. Decodes and allocates nothing, needs no
 * codec. Since 1.1.
 *
 *  - stream: what stands at a place where a stream begins, stream_bytes bytes. More may follow the stream.
 *
 * Returns: TESK_OK: *length bytes are the complete stream, what follows is not part of it. Padding of up to
 *          two bytes behind its last bit counts as far as it is there;
 *          TESK_CUT: it ends early, *length is stream_bytes;
 *          TESK_INVALID_STREAM, TESK_UNSUPPORTED_FORMAT, TESK_INVALID_ARGUMENT: *length is 0.
 *          All of them as from tesk_decompress. A plain stream with the loss TESK_LOSS_LONG_SECTION ends
 *          where decoders end, which may be anywhere.
 */
tesk_status tesk_measure(const void* stream, size_t stream_bytes, size_t* length);

/* What a codec does differently, for tesk_options. */
enum {
    /* Streams are those of the command line tool, also where they do not restore the image, and where a
     * part of them opens as nothing. Without it, complete streams restore every image whose sides are 2
     * or more, and what a budget leaves of them opens as an approximation; images that need no special
     * care have the same stream either way. */
    TESK_PLAIN = 1,
    /* Compression without a budget does not decode what it wrote to compare it with the image.
     * Compression with a budget never does. */
    TESK_UNVERIFIED = 2
};

/* What a codec may use and where its memory comes from. 0 and null leave the default. */
typedef struct tesk_options {
    size_t struct_bytes;
    /* Largest image, in pixels. 0: no limit. */
    size_t max_pixels;
    /* Most memory that one call may hold, or an image row by row from begin to end, output blocks
     * included. 0: no limit. A call keeps a limit of
     * the peak_memory_bytes that it tells without one. What an image needs at least is refused before
     * anything is allocated; more may be refused while coding. It says little about the size of an
     * image that is decompressed: that goes row by row. */
    size_t max_memory_bytes;
    /* All memory of the codec and its output blocks come from here, but the exceptions of the C++
     * runtime: one at a time, of up to 136 bytes, where a stream or the memory ends early. Returns
     * memory aligned as by malloc, or null. Null: malloc and free. Set both or none. */
    void* (*allocate)(void* user, size_t size_bytes);
    void (*release)(void* user, void* memory);
    void* user;
    /* TESK_PLAIN, TESK_UNVERIFIED, both or 0. */
    uint32_t flags;
    /* Most memory that the codec keeps when a call ends, for the calls that follow: those on images of the
     * same geometry then ask the allocator for nothing but an output block, and touch no page for the first time.
     * What two calls in a row had no use for is given back. It counts for max_memory_bytes, and goes where it
     * would be in the way. 0: none is kept. Since 1.1; without options and in those of 1.0 it is
     * TESK_KEPT_BYTES. */
    size_t most_kept_bytes;
} tesk_options;

#define TESK_KEPT_BYTES 67108864
#define TESK_OPTIONS_INIT \
    { sizeof(tesk_options), 0, 0, NULL, NULL, NULL, 0, TESK_KEPT_BYTES }

typedef struct tesk_codec tesk_codec;

/*
 * Makes a codec. options may be null; it is copied.
 *
 * Returns: TESK_OK, *codec belongs to the caller; TESK_OUT_OF_MEMORY, TESK_INVALID_ARGUMENT: *codec
 * is null.
 */
tesk_status tesk_create(const tesk_options* options, tesk_codec** codec);

/* Destroys a codec. Null does nothing. Output blocks stay valid, but must then be released by the
 * caller's own release, or free. Requires: no call works with it. */
void tesk_destroy(tesk_codec* codec);

/* Gives what the codec keeps back to its allocator. Null does nothing. Requires: no call works with it. Between
 * the calls of an image that goes row by row it may be called. Since 1.1. */
void tesk_trim(tesk_codec* codec);

/* Ends the call that works with codec, from any thread, within about one row of pixels or one section
 * of the stream. All further calls return TESK_STOPPED until tesk_clear_stop, those with an invalid
 * argument aside. Requires: codec is not null and not destroyed; for tesk_clear_stop, no call works
 * with it; between the calls of an image that goes row by row it may be called. */
void tesk_stop(tesk_codec* codec);
void tesk_clear_stop(tesk_codec* codec);

/* Why the stream of a compression will not restore its image. The numbers do not change. */
typedef enum tesk_loss {
    TESK_LOSS_NONE = 0, /* no loss; a stream that was written restores the image exactly */
    /* It was cut at the budget, and opens as an approximation, or as the image where it only lacks
     * padding. */
    TESK_LOSS_BUDGET = 1,
    TESK_LOSS_SIDE_OF_ONE = 2, /* an image with a side of 1 has no coefficients */
    TESK_LOSS_THIN_IMAGE = 3,  /* decoders filter the longer side of images with a side of 2 or 3 */
    TESK_LOSS_WRAPPED = 4, /* samples exceed bits_per_pixel by so much that 16 bits are too few */
    TESK_LOSS_ENDLESS_RUN = 5, /* too many coefficients for one run code */
    /* A section is longer than its length field can say. Decoders take what is behind it for something
     * else: they may refuse the stream, or take a part of it for the whole. */
    TESK_LOSS_LONG_SECTION = 6,
    TESK_LOSS_UNCHECKED = 7, /* it may or may not: there was no memory to find out */
    TESK_LOSS_UNKNOWN = 8    /* it was decoded and is not the image: please report this */
} tesk_loss;

/* Returns: a few words of English for a loss, also for a number that is none. Never null. Those of
 * TESK_LOSS_NONE promise nothing: look at the status first, without a stream nothing comes back. */
const char* tesk_loss_message(int loss);

/* What was done so that a stream restores its image where the plain one would not, for tesk_result, also
 * where a budget then cut it. Each is a bit. Such streams are read by every decoder. */
enum {
    TESK_RESCUE_THIN_FILTER = 1,   /* an image with a side of 2 or 3 was filtered */
    TESK_RESCUE_DECLARED_BITS = 2, /* the header declares more bits per pixel than the caller */
    TESK_RESCUE_CLOSING_RUNS = 4,  /* last runs, which nobody needs, were left out of sections */
    /* Some coefficients are sent as 65536 less their magnitude with the other sign. */
    TESK_RESCUE_OTHER_REPRESENTATIVE = 8,
    /* Multiples of 65536 were added to samples of more than 12 bits. A part of the image is white as
     * long as the stream is not complete. */
    TESK_RESCUE_WHOLE_WRAPS = 16,
    TESK_RESCUE_ENDLESS_RUNS = 32 /* long runs, more than a gigapixel, were spelled out */
};

/* What a call did. Every call sets all fields, to 0 where it came to nothing. */
typedef struct tesk_result {
    size_t struct_bytes;
    /* Bytes of the stream that was written, its 16 header bytes included. After
     * TESK_BUFFER_TOO_SMALL the bytes that are needed. 0 after decompression. */
    size_t stream_bytes;
    /* Most memory that the call held at one time, or the image row by row since its begin, an output
     * block included. */
    size_t peak_memory_bytes;
    /* Why the stream that was written will not restore the image, after TESK_OK and TESK_CUT of a
     * compression; why none would, after TESK_NOT_RESTORABLE; else TESK_LOSS_NONE. */
    tesk_loss loss;
    /* TESK_RESCUE_... bits of the stream that was written; 0 for a plain one. */
    uint32_t rescue;
} tesk_result;

#define TESK_RESULT_INIT \
    { sizeof(tesk_result), 0, 0, TESK_LOSS_NONE, 0 }

/*
 * Compresses an image into a stream.
 *
 *  - pixels: height rows of width pixels; row_stride_bytes from one row to the next, 0 for rows
 *    without gaps. It may be null for an image without pixels.
 *  - budget_bytes: the most bytes that the stream may have, header included: 16 or more. 0: no
 *    budget, the stream is complete. A stream that has to be cut is exactly so long, and opens as an
 *    approximation; a complete one restores the image. Both as long as the codec's flags do not say
 *    otherwise.
 *  - result: may be null.
 *
 * Returns: TESK_OK, TESK_CUT, TESK_STOPPED, TESK_LIMIT_EXCEEDED, TESK_OUT_OF_MEMORY,
 *          TESK_INVALID_ARGUMENT;
 *          TESK_UNSUPPORTED_FORMAT: a side above 65535, other bytes per pixel than 1, 2 and 3, or
 *          bits per pixel that are 0 or more than a sample has;
 *          TESK_NOT_RESTORABLE (without a budget and without TESK_PLAIN): a side is 1 and not all
 *          samples are 0. The contents of out are then undefined. With a budget, such an image has its
 *          plain stream, and result says what that loses;
 *          TESK_BUFFER_TOO_SMALL (tesk_compress only): nothing was written to out.
 */
/* ... into the caller's buffer of out_bytes bytes. A null buffer is one without room: the call then
 * tells the size that is needed. */
tesk_status tesk_compress(tesk_codec* codec, const tesk_image* image, const void* pixels,
                          size_t row_stride_bytes, size_t budget_bytes, void* out, size_t out_bytes,
                          tesk_result* result);

/* ... into a block that the codec's allocator provides, as long as the stream. *block belongs to the
 * caller, who gives it to tesk_release_block; it is null unless the status is TESK_OK or TESK_CUT. */
tesk_status tesk_compress_to_block(tesk_codec* codec, const tesk_image* image, const void* pixels,
                                   size_t row_stride_bytes, size_t budget_bytes, void** block,
                                   tesk_result* result);

/* Releases a block. Null does nothing. Requires: block is from tesk_compress_to_block or
 * tesk_compress_end of a codec with the same allocator. */
void tesk_release_block(tesk_codec* codec, void* block);

/*
 * Decompresses a stream, or any prefix of one that has its 16 header bytes, into the caller's
 * buffer. The geometry is that of tesk_probe.
 *
 *  - out: height rows of width pixels, row_stride_bytes from one row to the next, 0 for rows without
 *    gaps. Bytes between rows stay as they are. out_bytes: bytes that may be written at out; the
 *    last row needs no gap behind it.
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
 * Reduces a geometry to 1 : 2^levels: the sides are divided and rounded up. image->bits_per_pixel is
 * copied, whatever it is; image and reduced may be the same.
 *
 * Images have up to 5 levels: none with a shorter side below 4, one up to 7, two up to 15, and so on,
 * five from 64 pixels on. 0 levels are the image itself.
 *
 * Returns: TESK_OK, reduced is filled. Else it stays as it is:
 *          TESK_UNSUPPORTED_FORMAT: the image has fewer levels, or no stream can hold it, whatever its
 *          bits; TESK_INVALID_ARGUMENT.
 */
tesk_status tesk_reduced_image(const tesk_image* image, uint32_t levels, tesk_image* reduced);

/*
 * As tesk_decompress, but to the geometry of tesk_reduced_image: a thumbnail for a part of the time
 * and of the memory. levels 0 is tesk_decompress.
 *
 * Of the stream it reads the headers of all sections and the payload of those it needs, which prefixes
 * have early. The pixels are those of the transform at this size, a little sharper than an average
 * (docs/format.md, 17), and limited to bits_per_pixel, also where the stream is complete. The status is
 * that of tesk_decompress of the same bytes: TESK_CUT does not say that more of them would change the
 * picture.
 *
 * out, out_bytes, row_stride_bytes and the codec's max_pixels are about the reduced picture, not about
 * the image.
 *
 * Returns: as tesk_decompress; TESK_UNSUPPORTED_FORMAT also when the image has fewer levels.
 */
tesk_status tesk_decompress_reduced(tesk_codec* codec, const void* stream, size_t stream_bytes,
                                    uint32_t levels, void* out, size_t out_bytes,
                                    size_t row_stride_bytes, tesk_result* result);

/*
 * Row by row: rows come, or are asked for, in order and any number at a time. What a codec holds between
 * the calls is the stream, as far as it is coded, and a few rows; images of any size go through.
 *
 * A codec works on one image at a time: from a begin that returns TESK_OK to the end, every call that
 * compresses or decompresses something else is TESK_INVALID_ARGUMENT. That answer, which calls in the wrong
 * order and those with too many rows get as well, changes nothing of the image: it goes on. Every other
 * answer than TESK_OK ends it, and the codec is free again. tesk_destroy ends it as well.
 *
 * Both limits of the options hold for an image from begin to end.
 */

/*
 * Compresses an image row by row: begin, rows until there are height of them, end.
 *
 * The stream has the bytes that tesk_compress_to_block gives it. Without a budget it is decoded in the end
 * and compared with a checksum of the rows, CRC-64, unless TESK_UNVERIFIED is set: a stream of another
 * image passes with a chance of 1 in 2^64, one with a single wrong sample never.
 *
 *  - rows: row_count rows of width pixels, row_stride_bytes from one to the next, 0 for rows without gaps;
 *    they are read before the call returns. They may be null where they have no pixels.
 *  - block, result: as for tesk_compress_to_block.
 *
 * Returns: begin and rows TESK_OK; end TESK_OK or TESK_CUT; otherwise as tesk_compress_to_block. What is
 *          not restorable shows in the end, and without TESK_PLAIN there is one more such case, with a
 *          budget or without: TESK_LOSS_WRAPPED, up to 11 declared bits and samples that exceed them by so
 *          much that 16 bits are too few. Coding them anew takes all rows. tesk_used_bits tells the bits
 *          to declare.
 */
tesk_status tesk_compress_begin(tesk_codec* codec, const tesk_image* image, size_t budget_bytes);
tesk_status tesk_compress_rows(tesk_codec* codec, const void* rows, size_t row_stride_bytes,
                               uint32_t row_count);
tesk_status tesk_compress_end(tesk_codec* codec, void** block, tesk_result* result);

/*
 * Decompresses a stream, or any prefix of one that has its 16 header bytes, row by row: begin, rows until
 * there are height of them, end.
 *
 *  - stream: stays as it is until the end.
 *  - image: is filled as by tesk_probe; may be null.
 *  - rows: row_count rows of width pixels, row_stride_bytes from one to the next, 0 for rows without gaps.
 *    Bytes between rows stay as they are.
 *
 * Returns: begin and rows TESK_OK; end TESK_OK: the stream was complete; TESK_CUT: it ended early, the rows
 *          are an approximation (tesk_measure tells it beforehand); otherwise as tesk_decompress.
 */
tesk_status tesk_decompress_begin(tesk_codec* codec, const void* stream, size_t stream_bytes,
                                  tesk_image* image);
tesk_status tesk_decompress_rows(tesk_codec* codec, void* rows, size_t row_stride_bytes,
                                 uint32_t row_count);
tesk_status tesk_decompress_end(tesk_codec* codec, tesk_result* result);

/* Ends a compression or decompression that goes row by row without a result; the codec is free again. Does nothing where there is none, or
 * codec is null. */
void tesk_abandon(tesk_codec* codec);

#pragma GCC visibility pop
/* NOLINTEND(readability-identifier-naming) */

#ifdef __cplusplus
}
#endif

#endif

"""Describes the extension module tesk._tesk for cffi.

The compiler checks every declaration against tesk.h. Calls release the lock of the interpreter by themselves."""

from cffi import FFI

# Of each struct only what Python reads or writes; the compiler fills in the rest.
DECLARATIONS = """
typedef struct tesk_codec tesk_codec;

typedef struct tesk_image {
    size_t struct_bytes;
    uint32_t width, height, bytes_per_pixel, bits_per_pixel;
    ...;
} tesk_image;

typedef struct tesk_options {
    size_t struct_bytes;
    uint32_t flags;
    size_t most_kept_bytes;
    ...;
} tesk_options;

typedef struct tesk_result {
    size_t struct_bytes;
    size_t stream_bytes;
    int loss;
    ...;
} tesk_result;

static const int TESK_OK, TESK_CUT, TESK_INVALID_STREAM, TESK_UNSUPPORTED_FORMAT, TESK_LIMIT_EXCEEDED;
static const int TESK_OUT_OF_MEMORY, TESK_BUFFER_TOO_SMALL, TESK_INVALID_ARGUMENT, TESK_NOT_RESTORABLE;
static const int TESK_LOSS_NONE, TESK_LOSS_BUDGET;
static const int TESK_UNVERIFIED;

const char* tesk_status_message(int status);
const char* tesk_loss_message(int loss);
const char* tesk_version(void);

int tesk_probe(const void* stream, size_t stream_bytes, tesk_image* image);
int tesk_measure(const void* stream, size_t stream_bytes, size_t* length);
int tesk_used_bits(const tesk_image* image, const void* pixels, size_t row_stride_bytes, uint32_t* used);
int tesk_reduced_image(const tesk_image* image, uint32_t levels, tesk_image* reduced);

int tesk_create(const tesk_options* options, tesk_codec** codec);
void tesk_destroy(tesk_codec* codec);
void tesk_release_block(tesk_codec* codec, void* block);
int tesk_compress_to_block(tesk_codec* codec, const tesk_image* image, const void* pixels,
                                   size_t row_stride_bytes, size_t budget_bytes, void** block,
                                   tesk_result* result);
int tesk_decompress_reduced(tesk_codec* codec, const void* stream, size_t stream_bytes, uint32_t levels,
                                    void* out, size_t out_bytes, size_t row_stride_bytes, tesk_result* result);

int tesk_compress_begin(tesk_codec* codec, const tesk_image* image, size_t budget_bytes);
int tesk_compress_rows(tesk_codec* codec, const void* rows, size_t row_stride_bytes, uint32_t row_count);
int tesk_compress_end(tesk_codec* codec, void** block, tesk_result* result);
int tesk_decompress_begin(tesk_codec* codec, const void* stream, size_t stream_bytes, tesk_image* image);
int tesk_decompress_rows(tesk_codec* codec, void* rows, size_t row_stride_bytes, uint32_t row_count);
int tesk_decompress_end(tesk_codec* codec, tesk_result* result);
void tesk_abandon(tesk_codec* codec);
"""

builder = FFI()
builder.cdef(DECLARATIONS)
builder.set_source(
    "tesk._tesk",
    "#include <tesk/tesk.h>",
    libraries=["stdc++", "m"],
    # Other extensions of the process may hold a codec of their own: the symbols of this one stay inside.
    extra_link_args=["-Wl,--exclude-libs,ALL"],
)

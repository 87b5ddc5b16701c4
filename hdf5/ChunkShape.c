#include "ChunkShape.h"

#include "FilterError.h"

static const char* const kHolds = "tesk holds integers of 8 and 16 bits";

/* Returns: what samples are that are no integers. */
static const char* nameOfClass(H5T_class_t kind) {
    switch (kind) {
        case H5T_FLOAT:
            return "floating-point numbers";
        case H5T_STRING:
            return "strings";
        case H5T_COMPOUND:
            return "compounds (complex numbers are, too)";
        case H5T_ENUM:
            return "names of an enumeration (bool is one)";
        case H5T_ARRAY:
        case H5T_VLEN:
            return "arrays";
        default:
            return "of another kind";
    }
}

/* Fills the bytes of a sample, and whether it has a sign. */
static int describeType(hid_t type, ChunkValues* chunk) {
    const H5T_class_t kind = H5Tget_class(type);
    const size_t bytes = H5Tget_size(type);
    if (kind != H5T_INTEGER) {
        pushError(H5E_BADTYPE, "%s, and these elements are %s", kHolds, nameOfClass(kind));
        return -1;
    }
    if (bytes != 1 && bytes != 2) {
        pushError(H5E_BADTYPE, "%s, and these have %zu", kHolds, 8 * bytes);
        return -1;
    }
    if (bytes == 2 && H5Tget_order(type) != H5T_ORDER_LE) {
        pushError(H5E_BADTYPE, "%s in little-endian order, and these are big-endian", kHolds);
        return -1;
    }
    chunk->bytesPerPixel = (uint32_t)bytes;
    chunk->flags = H5Tget_sign(type) == H5T_SGN_2 ? kSignedSamples : 0;
    return 0;
}

/* The axes of a chunk, those of length 1 left out. */
typedef struct Axes {
    hsize_t lengths[H5S_MAX_RANK];
    int count;
    int endsInThree;
} Axes;

static void dropAxesOfOne(int rank, const hsize_t* dimensions, Axes* axes) {
    axes->count = 0;
    axes->endsInThree = rank > 0 && dimensions[rank - 1] == 3;
    for (int i = 0; i < rank; ++i)
        if (dimensions[i] != 1) axes->lengths[axes->count++] = dimensions[i];
}

/* Takes a last axis of 3 for R, G, B, the one in front of it for columns, and all others for rows. */
static int describeAxes(const Axes* axes, ChunkValues* chunk) {
    int left = axes->count;
    if (left >= 3 && axes->endsInThree && chunk->bytesPerPixel == 1 && chunk->flags == 0) {
        chunk->bytesPerPixel = 3;
        --left;
    }
    if (left < 2) {
        pushError(H5E_BADRANGE,
                  "tesk holds pictures: a chunk needs two axes that are longer than 1, and has %d",
                  left);
        return -1;
    }
    const hsize_t columns = axes->lengths[--left];
    hsize_t rows = 1;
    while (left > 0)
        rows *= axes->lengths[--left]; /* fits: all elements of a chunk are less than 2^32 */
    if (columns > 65535 || rows > 65535) {
        pushError(
            H5E_BADRANGE,
            "tesk holds chunks of up to 65535 rows (all axes but the last together) of up to 65535 "
            "columns, and these have %llu rows of %llu",
            (unsigned long long)rows, (unsigned long long)columns);
        return -1;
    }
    chunk->columns = (uint32_t)columns;
    chunk->rows = (uint32_t)rows;
    return 0;
}

int describeChunks(hid_t createList, hid_t type, ChunkValues* chunk) {
    hsize_t dimensions[H5S_MAX_RANK];
    Axes axes;
    const int rank = H5Pget_chunk(createList, H5S_MAX_RANK, dimensions);
    if (rank < 0 || describeType(type, chunk) < 0) return -1;
    dropAxesOfOne(rank, dimensions, &axes);
    return describeAxes(&axes, chunk);
}

#include "FilterValues.h"

#include "ChunkShape.h"
#include "ChunkValues.h"
#include "FilterError.h"
#include "tesk_hdf5.h"

_Static_assert(TESK_HDF5_UNVERIFIED == kUnverifiedChunks, "users and files have the same flags");

/* Filters in front of this one would give it other bytes than samples. */
static int checkPlace(hid_t createList) {
    const int filters = H5Pget_nfilters(createList);
    for (int i = 0, found = 0; i < filters; ++i) {
        unsigned flags;
        const H5Z_filter_t filter =
            H5Pget_filter2(createList, (unsigned)i, &flags, NULL, NULL, 0, NULL, NULL);
        found += filter == TESK_HDF5_FILTER;
        if (found == 1) continue;
        pushError(H5E_CANTFILTER,
                  "tesk takes samples, so it has to be the first filter, and there only: filter %d "
                  "is number "
                  "%d of them",
                  (int)filter, i + 1);
        return -1;
    }
    return 0;
}

/* Takes none, one or two values of a user; or those of a file, when the list is that of another dataset. */
static int takeUserValues(size_t count, const unsigned* values, ChunkValues* user) {
    *user = (ChunkValues){0, 0, 0, 0, 0};
    if (count == kChunkValueCount && readChunkValues(count, values, user)) {
        user->flags &= kUnverifiedChunks;
        return 0;
    }
    if (count > 0) user->bits = values[0];
    if (count > 1) user->flags = values[1];
    if (count <= 2 && (user->flags & ~(uint32_t)kUnverifiedChunks) == 0) return 0;
    pushError(H5E_BADVALUE, "tesk takes up to two values: bits, and %d for no comparison or 0",
              kUnverifiedChunks);
    return -1;
}

static int checkBits(const ChunkValues* chunk) {
    if (chunk->bits == 0 || chunk->bits == mostBits(chunk)) return 0;
    if (chunk->bits > mostBits(chunk)) {
        pushError(H5E_BADVALUE, "tesk is told of %u bits, and these samples have %u",
                  (unsigned)chunk->bits, (unsigned)mostBits(chunk));
        return -1;
    }
    if ((chunk->flags & kSignedSamples) == 0) return 0;
    pushError(H5E_BADVALUE,
              "tesk is told of %u bits, and signed samples always use all: leave the value away",
              (unsigned)chunk->bits);
    return -1;
}

herr_t setFilterValues(hid_t createList, hid_t type, hid_t space) {
    unsigned flags, values[kChunkValueCount] = {0};
    size_t count = kChunkValueCount;
    ChunkValues user, chunk = {0, 0, 0, 0, 0};
    (void)space;
    if (checkPlace(createList) < 0) return -1;
    if (H5Pget_filter_by_id2(createList, TESK_HDF5_FILTER, &flags, &count, values, 0, NULL, NULL) <
        0)
        return -1;
    if (takeUserValues(count, values, &user) < 0 || describeChunks(createList, type, &chunk) < 0)
        return -1;
    chunk.bits = user.bits;
    chunk.flags |= user.flags;
    if (checkBits(&chunk) < 0) return -1;
    writeChunkValues(&chunk, values);
    return H5Pmodify_filter(createList, TESK_HDF5_FILTER, flags, kChunkValueCount, values);
}

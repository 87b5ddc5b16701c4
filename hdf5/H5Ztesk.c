#include "H5Ztesk.h"

#include <H5PLextern.h>

#include "ChunkCoding.h"
#include "FilterError.h"
#include "FilterValues.h"
#include "tesk_hdf5.h"

/* Both ways of the filter: replaces byteCount bytes at *buffer, which is HDF5's and may be longer than they are.
 * Returns: the bytes that stand there now; 0: failed, and *buffer is as it was. */
static size_t filterChunk(unsigned flags, size_t valueCount, const unsigned values[],
                          size_t byteCount, size_t* bufferBytes, void** buffer) {
    ChunkValues chunk;
    if (!readChunkValues(valueCount, values, &chunk)) {
        pushError(H5E_BADVALUE,
                  "the values of the filter are not those that this version of tesk makes");
        return 0;
    }
    /* A stream that is longer than its samples is better than a chunk that cannot be written. */
    const int mayNotGrow = (flags & H5Z_FLAG_OPTIONAL) != 0;
    const size_t made = (flags & H5Z_FLAG_REVERSE) != 0
                            ? decodeChunk(&chunk, buffer, byteCount)
                            : encodeChunk(&chunk, mayNotGrow, buffer, byteCount);
    if (made != 0) *bufferBytes = made;
    return made;
}

const H5Z_class2_t kTeskFilter = {
    H5Z_CLASS_T_VERS, TESK_HDF5_FILTER, 1, 1, "tesk: lossless pictures", NULL,
    setFilterValues,  filterChunk,
};

H5PL_type_t H5PLget_plugin_type(void) {
    return H5PL_TYPE_FILTER;
}

const void* H5PLget_plugin_info(void) {
    return &kTeskFilter;
}

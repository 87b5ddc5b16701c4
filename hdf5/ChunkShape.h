#ifndef TESK_CHUNK_SHAPE_H
#define TESK_CHUNK_SHAPE_H

#include <hdf5.h>

#include "ChunkValues.h"

/* Finds out how the chunks of a dataset that is about to be created make pictures: what type the samples have, which
 * axes are rows, columns and colours. Fills bytesPerPixel, columns, rows and kSignedSamples.
 *
 * Returns: 0; -1: no stream holds them, and HDF5's stack of errors says why. */
int describeChunks(hid_t createList, hid_t type, ChunkValues* chunk);

#endif

#ifndef TESK_HDF5_H
#define TESK_HDF5_H

/*
 * What programs that write HDF5 files need to know of the filter: H5Pset_filter(list, TESK_HDF5_FILTER,
 * H5Z_FLAG_MANDATORY, count, values) with up to two values, bits and flags.
 *
 *  - bits: the significant bits of a sample. 0, as without values: found for each chunk. No chunk is lost
 *    whose samples have more.
 *  - flags: TESK_HDF5_UNVERIFIED or 0.
 */

/* Provisional: numbers from 32768 to 65535 are for use inside a house, and registered with nobody. Files that are
 * made now need a build of tesk with this number; a published one comes from The HDF Group. */
#define TESK_HDF5_FILTER 32799

/* Chunks are not decoded and compared when they are written. */
#define TESK_HDF5_UNVERIFIED 2

#endif

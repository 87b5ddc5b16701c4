#ifndef TESK_FILTER_VALUES_H
#define TESK_FILTER_VALUES_H

#include <hdf5.h>

/* set_local of the filter, which HDF5 calls for each dataset that is about to be created: takes the user's values, looks
 * at type and shape of the chunks, and puts the values of a file in place of the user's.
 *
 * All checks are here: where a filter is optional, as those that h5py sets, the answer of can_apply is passed over in
 * silence, but that of set_local is not. */
herr_t setFilterValues(hid_t createList, hid_t type, hid_t space);

#endif

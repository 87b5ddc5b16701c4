#ifndef TESK_FILTER_ERROR_H
#define TESK_FILTER_ERROR_H

#include <H5Epublic.h>

/* Puts a line of words on HDF5's stack of errors: pushError(H5E_BADTYPE, "...", ...), as printf. Calls of HDF5 clear the
 * stack, so this one comes last. */
#define pushError(minor, ...)                                                                 \
    ((void)H5Epush2(H5E_DEFAULT, "tesk", __func__, __LINE__, H5E_ERR_CLS, H5E_PLINE, (minor), \
                    __VA_ARGS__))

#endif

#ifndef TESK_H5Z_TESK_H
#define TESK_H5Z_TESK_H

#include <hdf5.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The filter. Programs get it from the plugin; tests, which are linked with it, register it by H5Zregister. */
extern const H5Z_class2_t kTeskFilter;

#ifdef __cplusplus
}
#endif

#endif

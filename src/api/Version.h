#ifndef TESK_VERSION_H
#define TESK_VERSION_H

/* The one place that holds the version; the build reads it from here. */
#define TESK_VERSION_MAJOR 1
#define TESK_VERSION_MINOR 1
#define TESK_VERSION_PATCH 0

#endif

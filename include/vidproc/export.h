/* Included by the other public headers. C99 and C++. */
#ifndef VIDPROC_EXPORT_H
#define VIDPROC_EXPORT_H

#ifdef __GNUC__
/// Marks what the shared library exports.
#define VIDPROC_API __attribute__((visibility("default")))
#else
#define VIDPROC_API
#endif

#endif

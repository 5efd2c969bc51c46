// Symbol visibility for the host SDK libraries.
//
// The libraries are built with hidden visibility; classes and functions that form their public
// interface carry ZU_EXPORT. On ELF the same attribute serves both for building and for using.
#ifndef ZU_EXPORT_H
#define ZU_EXPORT_H

#if defined(_WIN32)
#define ZU_EXPORT
#else
#define ZU_EXPORT __attribute__((visibility("default")))
#endif

#endif  // ZU_EXPORT_H

// Symbol visibility for the annotation layer module. The module is built with hidden visibility;
// its exported classes, functions and entry points carry ANNOTATIONLAYER_EXPORT.
#ifndef ANNOTATIONLAYER_EXPORT_H
#define ANNOTATIONLAYER_EXPORT_H

#if defined(_WIN32)
#define ANNOTATIONLAYER_EXPORT
#else
#define ANNOTATIONLAYER_EXPORT __attribute__((visibility("default")))
#endif

#endif  // ANNOTATIONLAYER_EXPORT_H

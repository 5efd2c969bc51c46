// Scratch files of the auxiliary databases in the module's cache directory.
//
// Both auxiliary databases build their file path from a caller-supplied name. The name must stay a
// plain file name: a path separator (which every absolute path and every way up through ".." needs),
// an empty name and a NUL byte are refused before any file is touched.
//
// Paths are in the local code page, as everywhere in the module; they are converted to UTF-8 for
// the file system.
//
// Thread safety: stateless; safe from any thread.
#ifndef ANNOTATIONLAYER_CACHE_FILE_H
#define ANNOTATIONLAYER_CACHE_FILE_H

#include <string>

namespace AnnotationLayerInner {

// Whether `name` may be put between the cache directory and a file suffix: not empty, no '/' or
// '\\' (which also rules out absolute paths and parent references), no NUL byte.
bool IsPlainCacheName(const std::string& name);

bool CacheFileExists(const std::string& localPath);

// Removes the file at `localPath` when there is one. True when no file is left there.
bool RemoveCacheFile(const std::string& localPath);

}  // namespace AnnotationLayerInner

#endif  // ANNOTATIONLAYER_CACHE_FILE_H

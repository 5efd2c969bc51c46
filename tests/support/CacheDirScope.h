// Points the core library's data directory at a fresh temporary directory holding an empty
// "layer_cache/" for the lifetime of the object, and restores the previous data directory after.
// For tests of the files the module keeps in its cache directory.
#ifndef ANNOTATIONLAYER_TEST_CACHE_DIR_SCOPE_H
#define ANNOTATIONLAYER_TEST_CACHE_DIR_SCOPE_H

#include <string>

#include "TempDir.h"

class CCacheDirScope {
 public:
  CCacheDirScope();
  ~CCacheDirScope();
  CCacheDirScope(const CCacheDirScope&) = delete;
  CCacheDirScope& operator=(const CCacheDirScope&) = delete;

  // The data directory, ending in '/'.
  const std::string& DataDir() const { return dir_.Path(); }
  // DataDir() + "layer_cache/".
  const std::string& CacheDir() const { return cacheDir_; }
  // CacheDir() + name.
  std::string CacheFile(const std::string& name) const { return cacheDir_ + name; }

 private:
  CTempDir dir_;
  std::string cacheDir_;
  std::string savedDataDir_;
};

#endif  // ANNOTATIONLAYER_TEST_CACHE_DIR_SCOPE_H
